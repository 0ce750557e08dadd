// The order in which the clades of a tree are drawn.
#pragma once

#include <vector>

#include "base/indices.h"
#include "trees/tree_record.h"

namespace zeb {

/// A tree with its descendants in drawing order. Node numbers are those of the tree.
struct drawing_order {
  std::vector<int> first;     // nodes + 1: where a node's descendants begin in `children`
  std::vector<int> children;  // descendants of all nodes, in drawing order
  std::vector<int> preorder;  // all nodes that are in the tree, each before its descendants
  std::vector<int> weight;    // terminals below each node

  int count(int node) const { return begin_of(node + 1) - begin_of(node); }
  int child(int node, int i) const { return children[at(begin_of(node)) + at(i)]; }
  std::size_t nodes() const { return first.size() - 1; }

 private:
  int begin_of(int node) const { return first[at(node)]; }
};

/// Sorts the clades of every node: the one that holds the outgroup on top, the others in increasing
/// number of terminals, equals in the order of their lowest terminal. With `second_largest_first`
/// the second heaviest goes before the lighter ones.
drawing_order order_for_drawing(const_tree_span tree, int ntax, int outgroup,
                                bool second_largest_first);

}  // namespace zeb
