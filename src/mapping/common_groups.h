// The strict consensus of stored trees, and where its groups are in each of them.
#pragma once

#include <vector>

#include "trees/tree_record.h"

namespace zeb {

struct common_groups {
  std::vector<tree_node> tree;
  /// By tree, in the order given, then node of the consensus: the node with the same terminals; -1
  /// where the tree lacks them.
  std::vector<std::vector<int>> nodes;
};
common_groups groups_in_all(const std::vector<int>& trees);

}  // namespace zeb
