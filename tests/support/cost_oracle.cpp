#include "support/cost_oracle.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>

namespace naive {
namespace {

constexpr long never = std::numeric_limits<long>::max() / 4;

int root_of(const rooted_tree& tree) {
  for (int v = tree.terminals; v < static_cast<int>(tree.parent.size()); ++v)
    if (tree.parent[v] < 0) return v;
  return -1;
}

bool has_state(std::uint32_t cell, int s) { return cell == 0 || (cell >> s & 1) != 0; }

long root_price(const change_costs& costs, int s) {
  return costs.root_states == 0 || (costs.root_states >> s & 1) ? 0 : forbidden;
}

/// What the subtree of `v` costs if `v` has value `a`.
long below(const rooted_tree& tree, int v, long a, const std::function<bool(int, long)>& may_have,
           const std::vector<long>& values, const std::function<long(long, long)>& change,
           std::map<std::pair<int, long>, long>& known) {
  if (!may_have(v, a)) return never;
  if (v < tree.terminals) return 0;
  const auto found = known.find({v, a});
  if (found != known.end()) return found->second;
  long sum = 0;
  for (int d = 0; d < static_cast<int>(tree.parent.size()); ++d) {
    if (tree.parent[d] != v) continue;
    long least = never;
    for (const long b : values)
      least = std::min(least, change(a, b) + below(tree, d, b, may_have, values, change, known));
    sum = std::min(never, sum + least);
  }
  return known[{v, a}] = sum;
}

}  // namespace

long least_cost(const rooted_tree& tree, const std::vector<std::uint32_t>& cells,
                const change_costs& costs, int node, int state) {
  const auto may_have = [&](int v, long a) {
    if (v == node && a != state) return false;
    return v >= tree.terminals || has_state(cells[v], static_cast<int>(a));
  };
  std::vector<long> values;
  for (int s = 0; s < costs.states; ++s) values.push_back(s);
  std::map<std::pair<int, long>, long> known;
  long least = never;
  for (const long s : values)
    least = std::min(least, root_price(costs, static_cast<int>(s)) +
                                below(
                                    tree, root_of(tree), s, may_have, values,
                                    [&](long a, long b) { return costs.cost[a][b]; }, known));
  return least;
}

long least_cost_by_trying(const rooted_tree& tree, const std::vector<std::uint32_t>& cells,
                          const change_costs& costs) {
  const int nodes = static_cast<int>(tree.parent.size());
  std::vector<int> state(nodes, 0);
  long least = never;
  for (;;) {
    long sum = root_price(costs, state[root_of(tree)]);
    for (int v = 0; v < nodes; ++v) {
      if (tree.parent[v] < 0) continue;
      if (v >= tree.terminals) {
        sum += costs.cost[state[tree.parent[v]]][state[v]];
        continue;
      }
      long cheapest = never;
      for (int s = 0; s < costs.states; ++s)
        if (has_state(cells[v], s))
          cheapest = std::min(cheapest, costs.cost[state[tree.parent[v]]][s]);
      sum += cheapest;
    }
    least = std::min(least, sum);
    int v = tree.terminals;
    while (v < nodes && ++state[v] == costs.states) state[v++] = 0;
    if (v == nodes) return least;
  }
}

long least_change(const rooted_tree& tree, const std::vector<std::pair<long, long>>& ranges) {
  std::vector<long> values;
  for (const auto& [low, high] : ranges)
    if (low <= high) values.insert(values.end(), {low, high});
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end()), values.end());
  std::map<std::pair<int, long>, long> known;
  const auto in_range = [&](int v, long a) {
    return v >= tree.terminals || ranges[v].first > ranges[v].second ||
           (a >= ranges[v].first && a <= ranges[v].second);
  };
  long least = never;
  for (const long a : values)
    least = std::min(least, below(
                                tree, root_of(tree), a, in_range, values,
                                [](long x, long y) { return std::labs(x - y); }, known));
  return least;
}

}  // namespace naive
