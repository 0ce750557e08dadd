#include "matrix/costs/cost_steps.h"

#include <algorithm>
#include <bit>
#include <vector>

#include "base/indices.h"
#include "matrix/costs/character_costs.h"
#include "matrix/smallest_hitting_set.h"

namespace zeb {
namespace {

using amount = std::int64_t;

std::uint32_t bit(int state) { return std::uint32_t{1} << state; }

/// The cells that say something, without those that others make sure of: a cell that holds all of
/// another's states.
std::vector<std::uint32_t> kinds_of_cells(const character_costs& costs) {
  std::vector<std::uint32_t> cells = costs.cells;
  std::erase(cells, 0U);
  std::sort(cells.begin(), cells.end());
  cells.erase(std::unique(cells.begin(), cells.end()), cells.end());
  std::vector<std::uint32_t> kept;
  for (const std::uint32_t c : cells)
    if (std::none_of(cells.begin(), cells.end(),
                     [c](std::uint32_t d) { return d != c && (d & ~c) == 0; }))
      kept.push_back(c);
  return kept;
}

bool may_be_root(const character_costs& costs, int state) {
  return costs.root_states == 0 || (costs.root_states & bit(state)) != 0;
}

/// The state at the root of the bush from which all cells are reached most cheaply.
amount bush_cost(const character_costs& costs) {
  amount least = -1;
  for (int root = 0; root < costs.count(); ++root) {
    amount sum = may_be_root(costs, root) ? 0 : forbidden_cost;
    for (const std::uint32_t cell : costs.cells) {
      if (cell == 0) continue;
      amount nearest = forbidden_cost;
      for (std::uint32_t rest = cell; rest; rest &= rest - 1)
        nearest = std::min<amount>(nearest, costs.of(root, std::countr_zero(rest)));
      sum += nearest;
    }
    if (least < 0 || sum < least) least = sum;
  }
  return least;
}

/// Cheapest ways between states over any number of changes (Floyd 1962).
std::vector<amount> distances(const character_costs& costs) {
  std::vector<amount> table(costs.cost.begin(), costs.cost.end());
  const std::size_t n = costs.states.size();
  for (std::size_t via = 0; via < n; ++via)
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j)
        table[i * n + j] = std::min(table[i * n + j], table[i * n + via] + table[via * n + j]);
  return table;
}

/// The cheapest changes, from some state on, that come by a state of each kind of cells: a cost for
/// each set of kinds and each state to begin with, put together from two sets that begin with the
/// same state or from the same set begun elsewhere (Dreyfus and Wagner 1971).
amount cheapest_history(const character_costs& costs, const std::vector<std::uint32_t>& kinds) {
  const std::size_t n = costs.states.size();
  const std::vector<amount> distance = distances(costs);
  const std::size_t sets = std::size_t{1} << kinds.size();
  std::vector<amount> least(sets * n, amount{forbidden_cost} * 1000);
  for (std::size_t set = 1; set < sets; ++set) {
    amount* const own = &least[set * n];
    if (std::has_single_bit(set)) {
      const std::uint32_t cell = kinds[static_cast<std::size_t>(std::countr_zero(set))];
      for (std::size_t s = 0; s < n; ++s)
        if (cell >> s & 1U) own[s] = 0;
    }
    for (std::size_t part = (set - 1) & set; part > (set ^ part); part = (part - 1) & set)
      for (std::size_t s = 0; s < n; ++s)
        own[s] = std::min(own[s], least[part * n + s] + least[(set ^ part) * n + s]);
    const std::vector<amount> here(own, own + n);
    for (std::size_t s = 0; s < n; ++s)
      for (std::size_t t = 0; t < n; ++t) own[s] = std::min(own[s], distance[s * n + t] + here[t]);
  }
  amount result = amount{forbidden_cost} * 1000;
  for (int s = 0; s < costs.count(); ++s)
    if (may_be_root(costs, s)) result = std::min(result, least[(sets - 1) * n + at(s)]);
  return result;
}

/// Some h states, each in one cell at least, are joined by the changes on any tree. That takes h -
/// 1 changes; a walk round the tree goes along each change twice and between h pairs of states; and
/// two states that stand alone in cells are as far apart on the tree as their distance.
amount cost_from_below(const character_costs& costs, const std::vector<std::uint32_t>& kinds) {
  const amount joined = smallest_hitting_set(kinds);
  const std::size_t n = costs.states.size();
  const std::vector<amount> distance = distances(costs);
  std::uint32_t alone = 0;
  std::uint32_t some = 0;
  for (const std::uint32_t cell : kinds) {
    some |= cell;
    if (std::has_single_bit(cell)) alone |= cell;
  }
  const auto holds = [](std::uint32_t set, std::size_t state) { return (set >> state & 1U) != 0; };
  amount cheapest = forbidden_cost;
  amount nearest = forbidden_cost;
  amount farthest = 0;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const amount apart = std::min(distance[i * n + j], distance[j * n + i]);
      cheapest = std::min(cheapest, apart);
      if (holds(some, i) && holds(some, j)) nearest = std::min(nearest, apart);
      if (holds(alone, i) && holds(alone, j)) farthest = std::max(farthest, apart);
    }
  }
  return std::max({(joined - 1) * cheapest, (joined * nearest + 1) / 2, farthest});
}

/// An edge has a change if some cell lies wholly on its one side and some on the other.
amount edges_with_changes(const character_costs& costs, const std::vector<std::uint32_t>& kinds) {
  amount count = 0;
  for (const std::uint32_t far : costs.edges) {
    const auto beyond = [far](std::uint32_t cell) { return (cell & ~far) == 0; };
    const auto before = [far](std::uint32_t cell) { return (cell & far) == 0; };
    count += std::any_of(kinds.begin(), kinds.end(), beyond) &&
             std::any_of(kinds.begin(), kinds.end(), before);
  }
  return count;
}

amount least_cost(const character_costs& costs) {
  constexpr std::size_t most_kinds = 9;  // three to the power of this many steps
  const std::vector<std::uint32_t> kinds = kinds_of_cells(costs);
  if (kinds.empty()) return 0;
  if (!costs.edges.empty() && costs.root_states == 0) return edges_with_changes(costs, kinds);
  return kinds.size() <= most_kinds ? cheapest_history(costs, kinds)
                                    : cost_from_below(costs, kinds);
}

}  // namespace

step_range cost_steps(int character, std::span<const std::uint8_t> taxa) {
  const character_costs costs = costs_of_character(character, taxa);
  const auto clipped = [](amount steps) {
    return static_cast<int>(std::clamp<amount>(steps, 0, 2147483647));
  };
  return {clipped(least_cost(costs)), clipped(bush_cost(costs))};
}

}  // namespace zeb
