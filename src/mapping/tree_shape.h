// A stored tree with its walks made once, for what looks at many characters on it.
#pragma once

#include <vector>

#include "matrix/matrix.h"
#include "trees/tree_walks.h"

namespace zeb {

struct tree_shape {
  explicit tree_shape(const_tree_span record)
      : tree(record),
        lists(descendants_of(record, matrix.ntax)),
        inner(internal_nodes_root_first(lists, matrix.ntax)) {}

  int ancestor(int node) const { return tree[at(node)]; }
  int root() const { return matrix.ntax; }
  /// One more than the largest number of a node.
  std::size_t nodes() const { return lists.nodes(); }
  bool has(int node) const {
    return node >= matrix.ntax ? at(node) < nodes() : !is_absent(tree, node);
  }

  const_tree_span tree;  // not owned
  descendant_lists lists;
  std::vector<int> inner;  // internal nodes from the root outward
};

}  // namespace zeb
