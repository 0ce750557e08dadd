// Trees that commands keep beside those that they were made of.
#pragma once

#include <string_view>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// Becomes the last tree, in a group of that name; `what` it is gets told. Error: no space.
void keep_tree(const_tree_span tree, std::string_view group, std::string_view what);
/// The same for several.
void keep_trees(const std::vector<std::vector<tree_node>>& trees, std::string_view group,
                std::string_view what);

}  // namespace zeb
