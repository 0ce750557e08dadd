// Trees of this process as they travel, and trees that came.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "parallel/messages/contents.h"

namespace zeb {

/// The trees in memory, whether a search has them in its hands or not; with their groups.
tree_load trees_in_memory(bool with_groups);
/// The trees of these numbers.
tree_load selected_trees(std::span<const int> numbers, bool with_groups);

double score_of_stored_tree(int number);

/// Stores the trees; those that aren't trees of these data are left out. Returns how many there was
/// room for: without `may_grow` no more than the buffer has. `first` is set to the number of the
/// first one.
int store_trees(const tree_load& load, bool may_grow, int* first);

}  // namespace zeb
