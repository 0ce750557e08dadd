// Equal trees among those in memory, and what higher floors add to the meaning of equal.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "trees/tree_store.h"

namespace zeb {

/// Collapses the branches of a tree that are to be taken as absent, in place, and normalises it.
/// Trees are then equal if what is left is.
using tree_collapser = std::function<void(tree_span tree)>;
/// Makes one for the settings as they are, to be used within a command; nothing if no branch is to
/// be taken as absent. The engine plugs it in at start-up; without it, only exact copies are equal.
using collapser_source = tree_collapser (*)();
void set_collapser_source(collapser_source source);

/// Which constraints trees must satisfy to stay, plugged in at start-up.
struct constraint_filter {
  bool (*active)() = nullptr;             // constraints are defined and on
  bool (*satisfies)(int tree) = nullptr;  // by stored tree
  int (*broken)(int tree) = nullptr;      // constraints that the tree breaks
};
void set_constraint_filter(const constraint_filter& filter);
const constraint_filter& current_constraint_filter();

/// For each chosen tree the number of the first chosen tree that is equal to it, which may be
/// itself; -1 for the others. Takes time in proportion to the size of the trees.
std::vector<int> first_equal_trees(std::span<const std::uint8_t> chosen);

}  // namespace zeb
