#include "support/naive_parsimony.h"

#include <algorithm>
#include <array>

namespace naive {
namespace {

constexpr long unreachable = 1'000'000;
using costs = std::array<long, 32>;

costs terminal_costs(std::uint32_t cell, bool additive) {
  costs c{};
  if (cell == 0) return c;
  int low = 31;
  int high = 0;
  for (int s = 0; s < 32; ++s)
    if (cell >> s & 1) {
      low = std::min(low, s);
      high = std::max(high, s);
    }
  for (int s = 0; s < 32; ++s) {
    const bool has = additive ? s >= low && s <= high : (cell >> s & 1) != 0;
    c[s] = has ? 0 : unreachable;
  }
  return c;
}

/// Cheapest way from state s at the upper end of a branch to whatever the lower end costs.
costs along_branch(const costs& below, bool additive) {
  costs c{};
  for (int s = 0; s < 32; ++s) {
    c[s] = below[s];
    for (int t = 0; t < 32; ++t) {
      const long change = s == t ? 0 : additive ? std::abs(s - t) : 1;
      c[s] = std::min(c[s], below[t] + change);
    }
  }
  return c;
}

long solve(const rooted_tree& tree, const std::vector<std::uint32_t>& cells, bool additive,
           int fixed_node, int fixed_state) {
  const int nodes = static_cast<int>(tree.parent.size());
  std::vector<std::vector<int>> children(tree.parent.size());
  int root = -1;
  for (int v = 0; v < nodes; ++v) {
    if (tree.parent[v] >= 0)
      children[tree.parent[v]].push_back(v);
    else if (v >= tree.terminals)
      root = v;
  }
  std::vector<int> order = {root};
  for (std::size_t i = 0; i < order.size(); ++i)
    for (const int d : children[order[i]]) order.push_back(d);
  std::vector<costs> cost(tree.parent.size());
  for (auto v = order.rbegin(); v != order.rend(); ++v) {
    costs& c = cost[*v];
    c = *v < tree.terminals ? terminal_costs(cells[*v], additive) : costs{};
    for (const int d : children[*v]) {
      const costs up = along_branch(cost[d], additive);
      for (int s = 0; s < 32; ++s) c[s] += up[s];
    }
    if (*v == fixed_node)
      for (int s = 0; s < 32; ++s)
        if (s != fixed_state) c[s] = unreachable;
  }
  return *std::min_element(cost[root].begin(), cost[root].end());
}

}  // namespace

long least_steps(const rooted_tree& tree, const std::vector<std::uint32_t>& cells, bool additive) {
  return solve(tree, cells, additive, -1, 0);
}

long least_steps_with_state(const rooted_tree& tree, const std::vector<std::uint32_t>& cells,
                            bool additive, int node, int state) {
  return solve(tree, cells, additive, node, state);
}

rooted_tree random_tree(int n, std::mt19937& generator) {
  rooted_tree tree;
  tree.terminals = n;
  tree.parent.assign(2 * n - 1, -1);
  tree.parent[0] = n;
  tree.parent[1] = n;
  for (int t = 2; t < n; ++t) {
    // Branches: those above terminals 1 to t-1 and above the internal nodes made so far.
    const int pick = std::uniform_int_distribution<int>(0, 2 * t - 4)(generator);
    const int target = pick < t - 1 ? pick + 1 : n + 1 + (pick - (t - 1));
    const int joint = n + t - 1;
    tree.parent[joint] = tree.parent[target];
    tree.parent[target] = joint;
    tree.parent[t] = joint;
  }
  return tree;
}

}  // namespace naive
