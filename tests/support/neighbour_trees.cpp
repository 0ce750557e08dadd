#include "support/neighbour_trees.h"

#include <set>
#include <vector>

namespace naive {
namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

/// An unrooted tree; nodes that hang nowhere are spare.
struct network {
  std::vector<std::set<int>> next;

  void join(int a, int b) {
    next[at(a)].insert(b);
    next[at(b)].insert(a);
  }
  void cut(int a, int b) {
    next[at(a)].erase(b);
    next[at(b)].erase(a);
  }
  /// Takes out a node with two neighbours.
  void suppress(int v) {
    if (next[at(v)].size() != 2) return;
    const int a = *next[at(v)].begin();
    const int b = *next[at(v)].rbegin();
    cut(v, a);
    cut(v, b);
    join(a, b);
  }
  std::vector<std::pair<int, int>> edges_from(int start) const {
    std::vector<std::pair<int, int>> edges;
    std::vector<std::pair<int, int>> stack = {{start, -1}};
    while (!stack.empty()) {
      const auto [v, from] = stack.back();
      stack.pop_back();
      for (const int d : next[at(v)])
        if (d != from) {
          edges.emplace_back(v, d);
          stack.emplace_back(d, v);
        }
    }
    return edges;
  }
};

/// Rooted again on a new node beside terminal 0. Nodes are numbered anew.
rooted_tree rooted(network net, int terminals) {
  rooted_tree tree{terminals, std::vector<int>(at(terminals + 1), -1)};
  const int beside = *net.next[0].begin();
  net.cut(0, beside);
  tree.parent[0] = terminals;
  std::vector<std::pair<int, int>> stack = {{beside, terminals}};
  std::vector<int> from(net.next.size(), -1);
  while (!stack.empty()) {
    const auto [v, above] = stack.back();
    stack.pop_back();
    int number = v;
    if (v < terminals) {
      tree.parent[at(v)] = above;
    } else {
      number = static_cast<int>(tree.parent.size());
      tree.parent.push_back(above);
    }
    for (const int d : net.next[at(v)])
      if (d != from[at(v)]) {
        from[at(d)] = v;
        stack.emplace_back(d, number);
      }
  }
  return tree;
}

bool all_left_alone(const rooted_tree& tree, int clade, std::span<const std::uint8_t> left_alone) {
  if (left_alone.empty()) return false;
  for (int t = 0; t < tree.terminals; ++t)
    for (int v = t; v >= 0; v = tree.parent[at(v)])
      if (v == clade && !left_alone[at(t)]) return false;
  return true;
}

}  // namespace

void for_each_neighbour(const rooted_tree& tree, bool tbr, std::span<const std::uint8_t> left_alone,
                        const std::function<void(const rooted_tree&)>& visit) {
  const int n = tree.terminals;
  network whole{std::vector<std::set<int>>(tree.parent.size())};
  for (int v = 0; v < static_cast<int>(tree.parent.size()); ++v)
    if (tree.parent[at(v)] >= 0) whole.join(v, tree.parent[at(v)]);
  for (int clade = 1; clade < static_cast<int>(tree.parent.size()); ++clade) {
    if (clade == n || all_left_alone(tree, clade, left_alone)) continue;
    // The root is no node of the network; a clade beside terminal 0 hangs on it.
    network halves = whole;
    const int above = tree.parent[at(clade)];
    halves.cut(clade, above);
    if (above != n) halves.suppress(above);
    std::vector<std::pair<int, int>> places;
    if (above == n) {
      halves.cut(0, n);
    } else {
      halves.suppress(n);
      places = halves.edges_from(0);
    }
    network clip = halves;
    clip.suppress(clade);
    // Places to hold the clip by: its own root, and with TBR each of its branches.
    std::vector<std::pair<int, int>> holds = {{clade, clade}};
    if (tbr && clade >= n)
      for (const auto& edge : clip.edges_from(*halves.next[at(clade)].begin()))
        holds.push_back(edge);
    for (const auto& [a, b] : holds) {
      network turned = a == b ? halves : clip;
      if (a != b) {
        turned.cut(a, b);
        turned.join(a, clade);
        turned.join(b, clade);
      }
      if (places.empty() && tbr) {  // terminal 0 alone is left
        network joined = turned;
        joined.join(0, clade);
        visit(rooted(joined, n));
      }
      for (const auto& [c, d] : places) {
        network joined = turned;
        joined.cut(c, d);
        joined.join(c, above);
        joined.join(d, above);
        joined.join(above, clade);
        visit(rooted(joined, n));
      }
    }
  }
}

}  // namespace naive
