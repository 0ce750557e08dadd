#include "trees/drawing/node_order.h"
#include "base/indices.h"

#include <algorithm>

namespace zeb {
namespace {

/// What the order of two clades depends on.
struct clade_keys {
  std::vector<int> weight;           // terminals
  std::vector<int> lowest;           // lowest terminal
  std::vector<std::uint8_t> on_top;  // holds the outgroup
};

/// Descendants of each node in node order, by counting sort on the ancestor.
void gather_children(const_tree_span tree, int ntax, drawing_order& order) {
  const int nodes = std::max(node_limit(tree, ntax), ntax + 1);
  order.first.assign(at(nodes) + 1, 0);
  const auto placed = [&](int n) { return n != ntax && (n > ntax || !is_absent(tree, n)); };
  for (int n = 0; n < nodes; ++n)
    if (placed(n)) ++order.first[at(tree[at(n)]) + 1];
  for (int n = 0; n < nodes; ++n) order.first[at(n) + 1] += order.first[at(n)];
  order.children.resize(at(order.first[at(nodes)]));
  std::vector<int> next(order.first.begin(), order.first.end() - 1);
  for (int n = 0; n < nodes; ++n)
    if (placed(n)) order.children[at(next[at(tree[at(n)])]++)] = n;
}

/// Nodes from the root, each before its descendants.
std::vector<int> walk(const drawing_order& order, int root) {
  std::vector<int> out, stack{root};
  out.reserve(order.children.size() + 1);
  while (!stack.empty()) {
    const int node = stack.back();
    stack.pop_back();
    out.push_back(node);
    for (int i = order.count(node) - 1; i >= 0; --i) stack.push_back(order.child(node, i));
  }
  return out;
}

clade_keys keys_of(const drawing_order& order, const_tree_span tree, int ntax, int outgroup) {
  const std::size_t nodes = order.first.size() - 1;
  clade_keys keys{std::vector<int>(nodes, 0), std::vector<int>(nodes, ntax),
                  std::vector<std::uint8_t>(nodes, 0)};
  for (auto n = order.preorder.rbegin(); n != order.preorder.rend(); ++n) {
    const std::size_t node = at(*n);
    if (*n < ntax) {
      keys.weight[node] = 1;
      keys.lowest[node] = *n;
      keys.on_top[node] = *n == outgroup;
    }
    if (*n == ntax) continue;
    const std::size_t above = at(tree[node]);
    keys.weight[above] += keys.weight[node];
    keys.lowest[above] = std::min(keys.lowest[above], keys.lowest[node]);
    keys.on_top[above] = keys.on_top[above] | keys.on_top[node];
  }
  return keys;
}

}  // namespace

drawing_order order_for_drawing(const_tree_span tree, int ntax, int outgroup,
                                bool second_largest_first) {
  drawing_order order;
  gather_children(tree, ntax, order);
  order.preorder = walk(order, ntax);
  clade_keys keys = keys_of(order, tree, ntax, outgroup);
  const auto before = [&](int a, int b) {
    if (keys.weight[at(a)] != keys.weight[at(b)]) return keys.weight[at(a)] < keys.weight[at(b)];
    return keys.lowest[at(a)] < keys.lowest[at(b)];
  };
  for (const int node : order.preorder) {
    const auto begin = order.children.begin() + order.first[at(node)];
    const auto end = order.children.begin() + order.first[at(node) + 1];
    if (end - begin < 2) continue;
    std::sort(begin, end, before);
    if (second_largest_first && end - begin > 2) std::rotate(begin, end - 2, end - 1);
    const auto top = std::find_if(begin, end, [&](int n) { return keys.on_top[at(n)] != 0; });
    if (top != end) std::rotate(begin, top, top + 1);
  }
  order.preorder = walk(order, ntax);
  order.weight = std::move(keys.weight);
  return order;
}

}  // namespace zeb
