// What functions of trees share: reading "[T N]", and the terminals of a node.
#pragma once

#include <utility>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

struct tree_and_node {
  const_tree_span tree;
  int number = 0;
  int node = 0;
};

/// "[T]": the tree's number.
int one_tree();
/// "[T1 T2]".
std::pair<const_tree_span, const_tree_span> two_trees();
/// "T N" within brackets that the caller reads.
tree_and_node tree_then_node();
/// "[T N]".
tree_and_node bracketed_tree_and_node();

/// Terminals of the node, increasing; a terminal is its own.
std::vector<int> terminals_of(const_tree_span tree, int node);
/// Writes node or taxon numbers as the list function `name`.
double write_nodes(const char* name, const std::vector<int>& nodes);

}  // namespace zeb
