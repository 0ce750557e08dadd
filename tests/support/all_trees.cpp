#include "support/all_trees.h"

#include <algorithm>
#include <array>

namespace naive {
namespace {

constexpr int most_states = 32;
constexpr long far_off = 1'000'000;
using costs = std::array<long, most_states>;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

void add_terminal(rooted_tree& tree, int t, const std::function<void(const rooted_tree&)>& visit) {
  const int n = tree.terminals;
  if (t == n) {
    visit(tree);
    return;
  }
  const int joint = n + t - 1;
  for (int v = 1; v < joint; ++v) {
    if (v >= t && v <= n) continue;  // terminals to come, and the root
    const int above = tree.parent[at(v)];
    tree.parent[at(joint)] = above;
    tree.parent[at(v)] = tree.parent[at(t)] = joint;
    add_terminal(tree, t + 1, visit);
    tree.parent[at(v)] = above;
  }
}

/// Least cost of what lies beyond a node in one direction, by its state, and one change more where
/// the neighbour's state is another.
costs across(const costs& beyond) {
  const long least = *std::min_element(beyond.begin(), beyond.end());
  costs result{};
  for (std::size_t s = 0; s < most_states; ++s) result[s] = std::min(beyond[s], least + 1);
  return result;
}

struct character_costs {
  std::vector<costs> below;   // by node: of its subtree
  std::vector<costs> beside;  // by node: of all the rest, by the state of its ancestor
};

costs sum(const costs& a, const costs& b) {
  costs c{};
  for (std::size_t s = 0; s < most_states; ++s) c[s] = std::min(a[s] + b[s], far_off);
  return c;
}

character_costs all_costs(const rooted_tree& tree, const std::vector<std::uint32_t>& cells,
                          const std::vector<int>& rootward_last,
                          const std::vector<std::vector<int>>& children, std::uint32_t observed) {
  character_costs c{std::vector<costs>(tree.parent.size()), std::vector<costs>(tree.parent.size())};
  for (const int v : rootward_last) {
    costs own{};
    for (int s = 0; s < most_states; ++s) {
      const bool may = v < tree.terminals && cells[at(v)] ? (cells[at(v)] >> s & 1U) != 0
                                                          : (observed >> s & 1U) != 0;
      own[at(s)] = may ? 0 : far_off;
    }
    for (const int d : children[at(v)]) own = sum(own, across(c.below[at(d)]));
    c.below[at(v)] = own;
  }
  for (auto it = rootward_last.rbegin(); it != rootward_last.rend(); ++it) {
    for (const int d : children[at(*it)]) {
      costs rest{};
      for (std::size_t s = 0; s < most_states; ++s) rest[s] = observed >> s & 1U ? 0 : far_off;
      for (const int e : children[at(*it)]) {
        if (e != d) rest = sum(rest, across(c.below[at(e)]));
      }
      if (tree.parent[at(*it)] >= 0) rest = sum(rest, across(c.beside[at(*it)]));
      c.beside[at(d)] = rest;
    }
  }
  return c;
}

bool supports(const costs& below, const costs& beside, support rule) {
  long best = far_off;
  for (std::size_t x = 0; x < most_states; ++x) {
    for (std::size_t y = 0; y < most_states; ++y) {
      best = std::min(best, beside[x] + below[y] + (x != y));
    }
  }
  bool may_change = false;
  bool may_stay = false;
  std::uint32_t above_states = 0;
  std::uint32_t below_states = 0;
  for (std::size_t x = 0; x < most_states; ++x) {
    for (std::size_t y = 0; y < most_states; ++y) {
      if (beside[x] + below[y] + (x != y) != best) continue;
      above_states |= 1U << x;
      below_states |= 1U << y;
      (x == y ? may_stay : may_change) = true;
    }
  }
  switch (rule) {
    case support::always:
      return true;
    case support::possible:
      return may_change;
    case support::differs:
      return above_states != below_states;
    case support::certain:
      return !may_stay;
  }
  return true;
}

}  // namespace

void for_each_tree(int n, const std::function<void(const rooted_tree&)>& visit) {
  rooted_tree tree{n, std::vector<int>(at(2 * n - 1), -1)};
  tree.parent[0] = n;
  tree.parent[at(n + 1)] = n;
  tree.parent[1] = tree.parent[2] = n + 1;
  add_terminal(tree, 3, visit);
}

std::set<std::uint32_t> supported_groups(const rooted_tree& tree,
                                         const std::vector<std::vector<std::uint32_t>>& cells,
                                         support rule) {
  const int n = tree.terminals;
  std::vector<std::vector<int>> children(tree.parent.size());
  for (std::size_t v = 0; v < tree.parent.size(); ++v) {
    if (tree.parent[v] >= 0) children[at(tree.parent[v])].push_back(static_cast<int>(v));
  }
  std::vector<int> order = {n};
  for (std::size_t i = 0; i < order.size(); ++i) {
    for (const int d : children[at(order[i])]) order.push_back(d);
  }
  std::reverse(order.begin(), order.end());
  std::vector<std::uint32_t> group(tree.parent.size(), 0);
  for (const int v : order) {
    if (v < n) group[at(v)] = v == 0 ? 0 : 1U << v;
    for (const int d : children[at(v)]) group[at(v)] |= group[at(d)];
  }
  std::vector<std::uint8_t> stays(tree.parent.size(), rule == support::always);
  for (const std::vector<std::uint32_t>& character : cells) {
    std::uint32_t observed = 0;
    for (const std::uint32_t cell : character) observed |= cell;
    if (!observed) continue;
    const character_costs c = all_costs(tree, character, order, children, observed);
    for (const int v : order) {
      if (v > n && !stays[at(v)]) stays[at(v)] = supports(c.below[at(v)], c.beside[at(v)], rule);
    }
  }
  std::set<std::uint32_t> groups;
  for (const int v : order) {
    if (v > n && tree.parent[at(v)] != n && stays[at(v)]) groups.insert(group[at(v)]);
  }
  return groups;
}

namespace {

/// The sides without terminal 0 of all branches, those of terminals included.
std::set<std::uint32_t> all_splits(const rooted_tree& tree) {
  std::vector<std::uint32_t> below(tree.parent.size(), 0);
  for (int t = 1; t < tree.terminals; ++t) {
    for (int v = t; v >= 0; v = tree.parent[at(v)]) below[at(v)] |= 1U << t;
  }
  std::set<std::uint32_t> splits(below.begin(), below.end());
  splits.erase(0);
  return splits;
}

/// The tree of the terminals in `part` alone, as splits.
std::set<std::uint32_t> restricted(const std::set<std::uint32_t>& splits, std::uint32_t part) {
  const std::uint32_t lowest = part & (~part + 1);
  std::set<std::uint32_t> result;
  for (const std::uint32_t split : splits) {
    const std::uint32_t side = split & part;
    result.insert(side & lowest ? part & ~side : side);
  }
  result.insert(0);
  return result;
}

}  // namespace

bool one_bisection_apart(const rooted_tree& a, const rooted_tree& b) {
  const std::set<std::uint32_t> in_a = all_splits(a);
  const std::set<std::uint32_t> in_b = all_splits(b);
  const std::uint32_t everything = (1U << a.terminals) - 1;
  return std::any_of(in_a.begin(), in_a.end(), [&](std::uint32_t cut) {
    const std::uint32_t rest = everything & ~cut;
    return in_b.contains(cut) && restricted(in_a, cut) == restricted(in_b, cut) &&
           restricted(in_a, rest) == restricted(in_b, rest);
  });
}

}  // namespace naive
