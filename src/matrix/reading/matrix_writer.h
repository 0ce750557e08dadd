// Writes the matrix in the form that `xread` reads.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zeb {

/// A row that isn't a taxon's: nchar cells.
struct named_row {
  std::string name;
  std::vector<std::uint32_t> cells;
};

/// What is written of the matrix.
struct write_request {
  std::span<const std::uint8_t> taxa;        // ntax bytes: 1 to write
  std::span<const std::uint8_t> characters;  // nchar bytes
  bool settings = true;  // with the commands that bring back settings and names of characters
  /// If not empty, cells to write in place of those in memory, by taxon and character.
  std::span<const std::uint32_t> cells;
  std::span<const named_row> more_rows;  // written behind the taxa
};

/// Sends complete commands to the output: reading them gives the same matrix.
void write_matrix(const write_request& request);

/// A cell as it is written: "0", "[01]", "R", "?", "0.5-0.75".
std::string written_cell(int character, std::uint32_t states);

/// A number with all digits that matter, without an exponent.
std::string exact_text(double value);

/// The internal nodes of a stored tree with their down-pass sets. Registered by the engine.
using node_row_source = std::vector<named_row> (*)(int tree);
void set_node_row_source(node_row_source source);
std::vector<named_row> node_rows(int tree);

}  // namespace zeb
