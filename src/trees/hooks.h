// What higher rooms give the trees' room at start-up, so that it can do what it knows nothing of.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// Collapses the branches of a tree that are to be taken as absent, in place, and normalises it.
using tree_collapser = std::function<void(tree_span tree)>;

/// How tags, drawings and the vault reach the user's arrays.
struct user_array_access {
  int (*read_name)() = nullptr;                  // reads the name of an array from the input
  std::vector<double> (*values)(int) = nullptr;  // its values
  void (*store)(int array, std::span<const double> values, int columns) = nullptr;  // row by row
};

struct trees_hooks {
  /// Makes a collapser for the settings as they are, to be used within a command: trees are equal
  /// if what it leaves of them is. Null, or an empty one: only exact copies are equal.
  tree_collapser (*collapser)() = nullptr;
  /// Fills the score of every tree of the buffer (`ntrees` values, score units).
  void (*score_trees)(std::span<double> scores) = nullptr;
  user_array_access user_arrays;
  /// Takes the values of a list that would be printed. False: it is printed.
  bool (*take_list)(std::span<const double> values) = nullptr;
};
extern trees_hooks hooks_of_trees;

}  // namespace zeb
