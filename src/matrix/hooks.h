// What higher rooms lend to this one at start-up. Without a loan the commands that need it say so.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zeb {

/// A row that isn't a taxon's: nchar cells, in the arena until the command ends.
struct named_row {
  std::string name;
  std::span<std::uint32_t> cells;
};

/// What characters can be selected by: a value of each on a tree.
enum class tree_measure { steps, homoplasy, score };

struct matrix_hooks {
  /// A copy of a stored tree, as an array of ancestors. Raises the error for one that isn't there.
  std::vector<std::int32_t> (*stored_tree)(int tree) = nullptr;
  /// The internal nodes of a stored tree with their down-pass sets.
  std::vector<named_row> (*node_rows)(int tree) = nullptr;
  /// Fills the values of every character (`nchar`) on a stored tree; raises the error for a tree
  /// that isn't there. Steps and homoplasy are unweighted, in units of the data.
  void (*measure_characters)(tree_measure measure, int tree, std::span<double> values) = nullptr;
  /// The least and most that a landmark character costs for the flagged taxa, about.
  void (*landmark_lengths)(int character, std::span<const std::uint8_t> taxa, double* least,
                           double* most) = nullptr;
  /// Are constraints on trees defined?
  bool (*constraints_defined)() = nullptr;
  /// Commands, without their ";", for what was chosen for landmarks of characters that get new
  /// numbers (by character; negative: left out).
  std::vector<std::string> (*landmark_commands)(std::span<const int> new_numbers) = nullptr;
};
extern matrix_hooks hooks_of_matrix;

}  // namespace zeb
