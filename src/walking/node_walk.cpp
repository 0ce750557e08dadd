#include "walking/node_walk.h"

#include <algorithm>

#include "base/indices.h"
#include "trees/drawing/node_order.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

// By node its descendants in the order of the visit.
std::vector<std::vector<int>> ordered_descendants(const_tree_span tree, int ntax, bool as_drawn,
                                                  int outgroup) {
  const auto nodes = at(node_limit(tree, ntax));
  std::vector<std::vector<int>> lists(nodes);
  if (as_drawn) {
    const drawing_order order = order_for_drawing(tree, ntax, outgroup, false);
    for (int v = ntax; v < static_cast<int>(nodes); ++v)
      for (int i = 0; i < order.count(v); ++i) lists[at(v)].push_back(order.child(v, i));
    return lists;
  }
  const descendant_lists all = descendants_of(tree, ntax);
  for (int v = ntax; v < static_cast<int>(nodes); ++v)
    for (const int child : all.children(v)) lists[at(v)].push_back(child);
  return lists;
}

// The clade of `node`, each node before its descendants.
std::vector<walked_node> clade(const std::vector<std::vector<int>>& lists, int node) {
  std::vector<walked_node> found;
  // A node is met twice: as itself, and as ~index when all of its clade has been.
  std::vector<int> waiting = {node};
  while (!waiting.empty()) {
    const int next = waiting.back();
    waiting.pop_back();
    if (next < 0) {
      found[at(~next)].after_clade = static_cast<int>(found.size());
      continue;
    }
    waiting.push_back(~static_cast<int>(found.size()));
    found.push_back({next, 0});
    const std::vector<int>& list = lists[at(next)];
    waiting.insert(waiting.end(), list.rbegin(), list.rend());
  }
  return found;
}

std::vector<int> to_root(const_tree_span tree, int ntax, int node) {
  std::vector<int> found = {node};
  while (found.back() != ntax) found.push_back(tree[at(found.back())]);
  return found;
}

std::vector<int> path_between(const_tree_span tree, int ntax, int from, int to) {
  std::vector<int> up = to_root(tree, ntax, from);
  std::vector<int> down = to_root(tree, ntax, to);
  // What both share above their meeting goes.
  while (up.size() > 1 && down.size() > 1 && up[up.size() - 2] == down[down.size() - 2]) {
    up.pop_back();
    down.pop_back();
  }
  down.pop_back();
  up.insert(up.end(), down.rbegin(), down.rend());
  return up;
}

std::vector<walked_node> as_walk(const std::vector<int>& nodes) {
  std::vector<walked_node> walk;
  for (const int node : nodes) walk.push_back({node, static_cast<int>(walk.size()) + 1});
  return walk;
}

}  // namespace

std::vector<walked_node> chosen_nodes(const std::vector<walked_node>& all,
                                      const std::function<bool(int)>& chosen) {
  std::vector<int> place = {0};
  for (const walked_node& one : all) place.push_back(place.back() + chosen(one.node));
  std::vector<walked_node> kept;
  for (const walked_node& one : all)
    if (chosen(one.node)) kept.push_back({one.node, place[at(one.after_clade)]});
  return kept;
}

std::vector<walked_node> nodes_of_walk(const_tree_span tree, int ntax, node_walk walk, int node,
                                       int other, bool as_drawn, int outgroup) {
  if (walk == node_walk::below) return as_walk(to_root(tree, ntax, node));
  if (walk == node_walk::path) return as_walk(path_between(tree, ntax, node, other));
  const auto lists = ordered_descendants(tree, ntax, as_drawn, outgroup);
  if (walk == node_walk::descendants) return as_walk(lists[at(node)]);
  const std::vector<walked_node> all = clade(lists, node);
  if (walk == node_walk::up_with_terminals) return all;
  std::vector<walked_node> internal = chosen_nodes(all, [ntax](int v) { return v >= ntax; });
  if (walk == node_walk::up) return internal;
  std::ranges::reverse(internal);
  return internal;
}

}  // namespace zeb
