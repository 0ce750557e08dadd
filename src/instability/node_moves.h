// Where the clades of a tree can go at no cost, or at little: every rearrangement within a limit is
// met once, by the swapper, and none is made.
#pragma once

#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// A move of a clade to another branch, in all its rootings that are within the limit.
struct node_move {
  int target = 0;            // the node of the tree above whose branch it goes to
  bool to_polytomy = false;  // ... or whose polytomy it joins, in some resolution
  int distance = 0;          // groups of the tree that it destroys, 1 or more: the fewest
  double excess = 0;         // of the score, the least; below 0: the tree improves
};

struct move_search {
  double limit = 0;  // of the excess
  bool tbr = false;
};
/// By node of a stored tree: the moves of its clade within the limit. Nodes without moves are those
/// of inactive taxa, the outgroup and the root, too. Moves that leave all groups of the tree
/// (within its polytomies) aren't any. Stops where it is interrupted: to be called as a search.
/// Errors: the tree lacks active taxa.
std::vector<std::vector<node_move>> moves_of_nodes(const_tree_span tree, const move_search& how);

}  // namespace zeb
