// The strict consensus of trees, and where its groups are in each of them.
#pragma once

#include <span>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

struct common_groups {
  std::vector<tree_node> tree;
  /// By tree, in the order given, then node of the consensus: the node with the same terminals; -1
  /// where the tree lacks them.
  std::vector<std::vector<int>> nodes;
};
/// One tree at least. Groups are told by the terminals that the trees have.
common_groups groups_in_all(std::span<const const_tree_span> trees);

}  // namespace zeb
