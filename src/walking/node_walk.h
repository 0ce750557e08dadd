// Lists of the nodes of a tree that a walk visits, in the order of the visit.
#pragma once

#include <functional>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

enum class node_walk { up, up_with_terminals, down, below, path, descendants };

struct walked_node {
  int node;
  int after_clade;  // index in the list of the first node that isn't of its clade; walks upward
                    // only
};

struct walk_settings {
  bool as_drawn = false;  // `travtree +`
};
extern walk_settings walk_order;  // written by `travtree`

/// Those of a walk for which `chosen` holds.
std::vector<walked_node> chosen_nodes(const std::vector<walked_node>& all,
                                      const std::function<bool(int)>& chosen);
/// The nodes from `node` on (and, for a path, to `other`). Descendants of a node come in the order
/// of their numbers or, with `as_drawn`, as diagrams show them.
std::vector<walked_node> nodes_of_walk(const_tree_span tree, int ntax, node_walk walk, int node,
                                       int other, bool as_drawn, int outgroup);

}  // namespace zeb
