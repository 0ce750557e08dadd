// Writes the matrix in the form that `xread` reads.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "matrix/hooks.h"
#include "matrix/matrix.h"

namespace zeb {

/// What is written of the matrix.
struct write_request {
  std::span<const std::uint8_t> taxa;        // ntax bytes: 1 to write
  std::span<const std::uint8_t> characters;  // nchar bytes
  bool settings = true;  // with the commands that bring back settings and names of characters
  /// If not empty, cells to write in place of those in memory, by taxon and character.
  std::span<const std::uint32_t> cells;
  std::span<const named_row> more_rows;  // written after the taxa
};

/// Sends complete commands to the output: reading them gives the same matrix.
void write_matrix(const write_request& request);

/// "{3 Eyes absent present ;", a line of a `cnames` command; empty for a character without any
/// name.
std::string written_names(int number, const matrix_state::character_name& names);

/// A cell as it is written: "0", "[01]", "R", "?", "0.5-0.75".
std::string written_cell(int character, std::uint32_t states);

/// A point as it is written: "0.5,-1" or "?".
std::string written_point(const landmark_point& point, int dimensions);

}  // namespace zeb
