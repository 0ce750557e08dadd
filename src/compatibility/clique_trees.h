// The tree of a set of compatible characters.
#pragma once

#include <vector>

#include "compatibility/compatible_characters.h"
#include "trees/tree_record.h"

namespace zeb {

struct clique_tree {
  std::vector<tree_node> tree;  // of the active taxa, rooted on the outgroup
  std::vector<int> in_doubt;    // characters of the set that have homoplasy on it
};
/// Puts in one partition after the other, those of most taxa first, where the tree allows it, with
/// taxa that a partition says nothing of left where they are. Exact for sets of splits; else
/// characters in doubt may still be without homoplasy on another tree.
clique_tree tree_of_characters(const compatibility_graph& graph, const taxon_set& patterns);

}  // namespace zeb
