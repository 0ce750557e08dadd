#include "engine/plain/cost_optimisation.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "base/indices.h"

namespace zeb {
namespace {

constexpr std::int64_t impossible = std::numeric_limits<std::int64_t>::max() / 4;

}  // namespace

void cost_optimiser::add_character(int character, std::span<const std::uint8_t> ignored_taxa) {
  characters_.push_back(character);
  costs_.push_back(costs_of_character(character));
  for (std::size_t t = 0; t < ignored_taxa.size() && t < at(matrix.ntax); ++t)
    if (ignored_taxa[t]) costs_.back().cells[t] = 0;
}

std::uint32_t cost_optimiser::cheapest(const character_costs& costs,
                                       const std::vector<std::int64_t>& table, int node) const {
  const std::size_t n = costs.states.size();
  const auto first = table.begin() + static_cast<std::ptrdiff_t>(at(node) * n);
  const std::int64_t least = *std::min_element(first, first + static_cast<std::ptrdiff_t>(n));
  std::uint32_t set = 0;
  for (std::size_t s = 0; s < n; ++s)
    if (table[at(node) * n + s] == least) set |= std::uint32_t{1} << costs.states[s];
  return set;
}

void cost_optimiser::fill_terminals(const character_costs& costs) {
  const std::size_t n = costs.states.size();
  for (std::size_t t = 0; t < at(matrix.ntax); ++t)
    for (std::size_t s = 0; s < n; ++s) {
      const bool has = costs.cells[t] == 0 || (costs.cells[t] >> s & 1U) != 0;
      own_cost_[t * n + s] = has ? 0 : impossible;
    }
}

void cost_optimiser::down_node(const character_costs& costs, int node, std::span<const int> below,
                               polytomy_kind polytomies) {
  constexpr std::size_t most_resolved = 9;  // three to the power of this many ways to divide them
  const std::size_t n = costs.states.size();
  std::fill_n(own_cost_.begin() + static_cast<std::ptrdiff_t>(at(node) * n), n, 0);
  for (const int d : below)
    for (std::size_t s = 0; s < n; ++s) {
      std::int64_t least = impossible;
      for (std::size_t t = 0; t < n; ++t)
        least = std::min(least, own_cost_[at(d) * n + t] + costs.cost[s * n + t]);
      cost_above_[at(d) * n + s] = least;
      own_cost_[at(node) * n + s] += least;
    }
  if (polytomies == polytomy_kind::soft && below.size() > 2 && below.size() <= most_resolved)
    resolve(costs, node, below);
}

/// Binary trees of the descendants: for each set of them, what the best one costs a node above it
/// by the state of that node, put together from those of two parts of the set.
void cost_optimiser::resolve(const character_costs& costs, int node, std::span<const int> below) {
  const std::size_t n = costs.states.size();
  const std::size_t sets = std::size_t{1} << below.size();
  std::vector<std::int64_t> above(sets * n, impossible);
  std::vector<std::int64_t> own(n);
  for (std::size_t set = 1; set < sets; ++set) {
    if (std::has_single_bit(set)) {
      const std::size_t d = at(below[static_cast<std::size_t>(std::countr_zero(set))]);
      for (std::size_t s = 0; s < n; ++s) above[set * n + s] = cost_above_[d * n + s];
      continue;
    }
    std::fill(own.begin(), own.end(), impossible);
    for (std::size_t part = (set - 1) & set; part > (set ^ part); part = (part - 1) & set)
      for (std::size_t s = 0; s < n; ++s)
        own[s] = std::min(own[s], above[part * n + s] + above[(set ^ part) * n + s]);
    for (std::size_t s = 0; s < n; ++s)
      for (std::size_t t = 0; t < n; ++t)
        above[set * n + s] = std::min(above[set * n + s], costs.cost[s * n + t] + own[t]);
  }
  std::copy(own.begin(), own.end(), own_cost_.begin() + static_cast<std::ptrdiff_t>(at(node) * n));
}

void cost_optimiser::final_node(const character_costs& costs, int node, int above) {
  const std::size_t n = costs.states.size();
  for (std::size_t t = 0; t < n; ++t) {
    std::int64_t rest = impossible;
    for (std::size_t s = 0; s < n; ++s)
      rest = std::min(rest, tree_cost_[at(above) * n + s] - cost_above_[at(node) * n + s] +
                                costs.cost[s * n + t]);
    tree_cost_[at(node) * n + t] = std::min(impossible, rest + own_cost_[at(node) * n + t]);
  }
}

void cost_optimiser::pass(std::size_t i, std::span<const int> order, const descendant_lists& lists,
                          polytomy_kind polytomies, bool with_finals) {
  const character_costs& costs = costs_[i];
  const std::size_t n = costs.states.size();
  own_cost_.resize(lists.nodes() * n);
  cost_above_.resize(own_cost_.size());
  fill_terminals(costs);
  for (int t = 0; t < matrix.ntax; ++t) down_[at(t) * size() + i] = cheapest(costs, own_cost_, t);
  std::vector<int> below;
  for (auto v = order.rbegin(); v != order.rend(); ++v) {
    below.clear();
    for (const int d : lists.children(*v)) below.push_back(d);
    down_node(costs, *v, below, polytomies);
    down_[at(*v) * size() + i] = cheapest(costs, own_cost_, *v);
  }
  const auto root = static_cast<std::ptrdiff_t>(at(matrix.ntax) * n);
  tree_cost_.assign(own_cost_.size(), 0);
  for (std::size_t s = 0; s < n; ++s) {
    const bool allowed = costs.root_states == 0 || (costs.root_states >> s & 1U) != 0;
    tree_cost_[at(matrix.ntax) * n + s] =
        own_cost_[at(matrix.ntax) * n + s] + (allowed ? 0 : forbidden_cost);
  }
  steps_[i] = *std::min_element(tree_cost_.begin() + root,
                                tree_cost_.begin() + root + static_cast<std::ptrdiff_t>(n));
  if (!with_finals) return;
  final_[at(matrix.ntax) * size() + i] = cheapest(costs, tree_cost_, matrix.ntax);
  for (const int v : order)
    for (const int d : lists.children(v)) {
      final_node(costs, d, v);
      final_[at(d) * size() + i] = cheapest(costs, tree_cost_, d);
    }
}

void cost_optimiser::optimise(std::span<const int> order, const descendant_lists& lists,
                              polytomy_kind polytomies, bool with_finals) {
  steps_.assign(size(), 0);
  down_.resize(lists.nodes() * size());
  if (with_finals) final_.resize(down_.size());
  for (std::size_t i = 0; i < size(); ++i) pass(i, order, lists, polytomies, with_finals);
}

}  // namespace zeb
