#include "trees/tree_walks.h"

namespace zeb {

descendant_lists descendants_of(const_tree_span tree, int ntax) {
  const std::size_t limit = at(node_limit(tree, ntax));
  descendant_lists lists{std::vector<int>(limit, -1), std::vector<int>(limit, -1),
                         std::vector<int>(limit, 0)};
  // Going down through the numbers puts the lowest at the head of each list.
  for (int v = static_cast<int>(limit) - 1; v >= 0; --v) {
    if (v == ntax || (v < ntax && tree[at(v)] == 0)) continue;
    const int a = tree[at(v)];
    lists.sibling[at(v)] = lists.first[at(a)];
    lists.first[at(a)] = v;
    ++lists.count[at(a)];
  }
  return lists;
}

std::vector<int> internal_nodes_root_first(const descendant_lists& lists, int ntax) {
  std::vector<int> order{ntax};
  for (std::size_t i = 0; i < order.size(); ++i) {
    for (const int d : lists.children(order[i])) {
      if (d > ntax) order.push_back(d);
    }
  }
  return order;
}

void flag_terminals(const_tree_span tree, int ntax, int node, std::span<std::uint8_t> flags) {
  if (node < ntax) {
    if (tree[at(node)] != 0) flags[at(node)] = 1;
    return;
  }
  const descendant_lists lists = descendants_of(tree, ntax);
  std::vector<int> waiting{node};
  while (!waiting.empty()) {
    const int v = waiting.back();
    waiting.pop_back();
    if (v < ntax) flags[at(v)] = 1;
    for (const int d : lists.children(v)) waiting.push_back(d);
  }
}

}  // namespace zeb
