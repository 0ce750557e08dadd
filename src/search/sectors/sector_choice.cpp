#include "search/sectors/sector_choice.h"

#include <algorithm>
#include <utility>

#include "base/indices.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

/// A tree with the descendants of its nodes, and the terminals below them.
struct sized_tree {
  sized_tree(std::span<const std::int32_t> tree, int n)
      : anc(tree), terminals(n), first(tree.size(), -1), second(tree.size(), -1) {
    for (int v = 1; v < static_cast<int>(tree.size()); ++v) {
      if (v == n) continue;
      const std::size_t up = at(tree[at(v)]);
      (first[up] < 0 ? first[up] : second[up]) = v;
    }
    order.push_back(first[at(n)]);
    for (std::size_t i = 0; i < order.size(); ++i) {
      if (order[i] < n) continue;
      order.push_back(first[at(order[i])]);
      order.push_back(second[at(order[i])]);
    }
    below.assign(tree.size(), 1);
    for (auto v = order.rbegin(); v != order.rend(); ++v)
      if (*v >= n) below[at(*v)] = below[at(first[at(*v)])] + below[at(second[at(*v)])];
  }
  int top() const { return order.front(); }
  bool is_terminal(int v) const { return v < terminals; }

  std::span<const std::int32_t> anc;
  int terminals;
  std::vector<std::int32_t> first, second;
  std::vector<std::int32_t> order;  // the ingroup's nodes, each before its descendants
  std::vector<std::int32_t> below;  // terminals; what is cut off counts as one
};

/// Where the walk outward from `top` ends: terminals and nodes marked as cut.
std::vector<std::int32_t> ends_of(const sized_tree& tree, int top,
                                  std::span<const std::uint8_t> cut) {
  std::vector<std::int32_t> ends;
  std::vector<std::int32_t> stack = {top};
  while (!stack.empty()) {
    const std::int32_t v = stack.back();
    stack.pop_back();
    if (tree.is_terminal(v) || (v != top && cut[at(v)])) {
      ends.push_back(v);
      continue;
    }
    stack.push_back(tree.second[at(v)]);
    stack.push_back(tree.first[at(v)]);
  }
  return ends;
}

std::vector<std::int32_t> internals_of(const sized_tree& tree, int top) {
  std::vector<std::int32_t> nodes = {top};
  for (std::size_t i = 0; i < nodes.size(); ++i)
    for (const std::int32_t v : {tree.first[at(nodes[i])], tree.second[at(nodes[i])]})
      if (!tree.is_terminal(v)) nodes.push_back(v);
  nodes.erase(nodes.begin());
  return nodes;
}

/// Makes clades terminals, in random order, until no more than `size` terminals are left.
void prune(sized_tree& tree, int top, int low, int size, random_generator& random,
           std::span<std::uint8_t> cut) {
  const std::vector<std::int32_t> nodes = internals_of(tree, top);
  std::vector<int> order(nodes.size());
  random_sequence(random, static_cast<int>(nodes.size()), order, -1, {});
  for (const int i : order) {
    if (tree.below[at(top)] <= size) return;
    const std::int32_t v = nodes[at(i)];
    const std::int32_t lost = tree.below[at(v)] - 1;
    if (lost == 0 || tree.below[at(top)] - lost < low) continue;
    cut[at(v)] = 1;
    for (int a = v; a != top; a = tree.anc[at(a)]) tree.below[at(a)] -= lost;
    tree.below[at(top)] -= lost;
    // What lies within is no longer of the sector.
    for (const std::int32_t within : internals_of(tree, v)) tree.below[at(within)] = 1;
  }
}

}  // namespace

tree_sector random_sector(std::span<const std::int32_t> tree, int n, int size,
                          random_generator& random, std::span<std::uint8_t> taken) {
  sized_tree sized(tree, n);
  const int low = size * 80 / 100;
  int v = random.draw() % static_cast<int>(tree.size());
  if (v == 0 || v == n) v = sized.top();
  while (v != sized.top() && sized.below[at(v)] < low) v = tree[at(v)];
  if (taken[at(v)]) {
    for (int steps = random.draw() % 15; steps > 0 && v != sized.top(); --steps) v = tree[at(v)];
  }
  if (sized.below[at(v)] >= low && sized.below[at(v)] <= size) taken[at(v)] = 1;
  std::vector<std::uint8_t> cut(tree.size(), 0);
  prune(sized, v, low, size, random, cut);
  return {v, ends_of(sized, v, cut)};
}

std::vector<tree_sector> exclusive_sectors(std::span<const std::int32_t> tree, int n, int count,
                                           bool even, random_generator& random) {
  sized_tree sized(tree, n);
  const int mean = std::max(4, (n - 1 + count - 1) / count);
  const auto next_size = [&] {
    return even ? mean : std::max(4, mean / 2 + random.draw() % (mean + 1));
  };
  std::vector<std::uint8_t> cut(tree.size(), 0);
  std::vector<tree_sector> sectors;
  int wanted = next_size();
  for (auto i = sized.order.rbegin(); i != sized.order.rend(); ++i) {
    const std::int32_t v = *i;
    if (sized.is_terminal(v)) continue;
    sized.below[at(v)] = sized.below[at(sized.first[at(v)])] + sized.below[at(sized.second[at(v)])];
    if (v != sized.top() && sized.below[at(v)] < wanted) continue;
    sectors.push_back({v, ends_of(sized, v, cut)});
    cut[at(v)] = 1;
    sized.below[at(v)] = 1;
    wanted = next_size();
  }
  return sectors;
}

std::vector<tree_sector> sectors_of_groups(std::span<const std::int32_t> tree, int n,
                                           std::span<const std::uint8_t> is_group, int least,
                                           int most) {
  const sized_tree sized(tree, n);
  std::vector<tree_sector> sectors;
  for (const std::int32_t v : sized.order) {
    if (sized.is_terminal(v) || (v != sized.top() && !is_group[at(v)])) continue;
    tree_sector sector{v, ends_of(sized, v, is_group)};
    const int fork = static_cast<int>(sector.terminals.size());
    if (fork >= least && fork <= most) sectors.push_back(std::move(sector));
  }
  return sectors;
}

tree_sector sector_around(std::span<const std::int32_t> tree, int n, int node, int distance) {
  const sized_tree sized(tree, n);
  // The outgroup's branch ends at the ingroup's node.
  int top = node == 0 ? sized.top() : node;
  int climbed = node == 0 ? 1 : 0;
  while ((climbed < distance || sized.is_terminal(top)) && top != sized.top()) {
    top = tree[at(top)];
    ++climbed;
  }
  // Branches from the node; those of its ancestors are counted on the way.
  std::vector<int> away(tree.size(), -1);
  int steps = node == 0 ? 1 : 0;
  for (int v = node == 0 ? top : node;; v = tree[at(v)]) {
    away[at(v)] = steps++;
    if (v == top) break;
  }
  std::vector<std::uint8_t> cut(tree.size(), 0);
  std::vector<std::int32_t> stack = {top};
  while (!stack.empty()) {
    const std::int32_t v = stack.back();
    stack.pop_back();
    if (sized.is_terminal(v)) continue;
    if (v != top && away[at(v)] >= distance) {
      cut[at(v)] = 1;
      continue;
    }
    for (const std::int32_t w : {sized.first[at(v)], sized.second[at(v)]}) {
      if (away[at(w)] < 0) away[at(w)] = away[at(v)] + 1;
      stack.push_back(w);
    }
  }
  return {top, ends_of(sized, top, cut)};
}

tree_sector sector_of_polytomies(std::span<const std::int32_t> tree, int n, int node, int above,
                                 int below) {
  const descendant_lists lists = descendants_of(tree, n);
  tree_sector sector{node, {}};
  std::vector<int> inside = {node};
  for (std::size_t i = 0; i < inside.size(); ++i)
    for (const int v : lists.children(inside[i])) {
      const bool goes_on = lists.count[at(v)] > above && lists.count[at(v)] < below;
      if (v > n && goes_on)
        inside.push_back(v);
      else
        sector.terminals.push_back(v);
    }
  return sector;
}

}  // namespace zeb
