// What is known of two data sets before their trees are compared.
//
// The combined matrix is the one in memory, with the trees of both files in the buffer. Where the
// files differ it holds what was chosen; each difference tells what either file has, so that the
// one can stand in for the other.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "matrix/settings/character_settings.h"

namespace zeb {

/// A cell of the matrix in memory, in the form that it has there: states, or a range.
struct differing_cell {
  int taxon = 0;
  int character = 0;
  std::uint32_t first = 0;
  std::uint32_t second = 0;
};

/// Settings of a character that differ, as changes that give it those of either file.
struct differing_settings {
  int character = 0;
  character_change first;
  character_change second;
};

struct compared_results {
  std::array<std::string, 2> names;       // of the files, as parts of other names
  std::array<std::vector<int>, 2> trees;  // numbers in the buffer
  std::vector<std::uint8_t> left_out;     // by taxon: of no concern to consensus and comparison
  std::vector<std::uint8_t> shared;       // by character: both files have it
  std::vector<differing_cell> cells;
  std::vector<differing_settings> settings;
};

/// When a cell is critical for what the trees differ in.
enum class critical_method { none, synapomorphies, lengths, either, both };
/// Whether trees get the taxa that only the other file has.
enum class missing_taxa { stay_away, added, added_for_consensus };

}  // namespace zeb
