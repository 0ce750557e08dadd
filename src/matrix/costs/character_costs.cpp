#include "matrix/costs/character_costs.h"

#include <algorithm>
#include <bit>

#include "base/indices.h"
#include "matrix/costs/step_matrices.h"

namespace zeb {
namespace {

std::uint32_t bit(int state) { return std::uint32_t{1} << state; }

/// States that a node of a tree may have, observed or not.
std::uint32_t existing_states(int character, const cost_table& costs) {
  const character_record& record = matrix.characters[at(character)];
  std::uint32_t states = states_in_cells(character) | costs.states | record.root_states;
  if (record.user_max_state >= 0)
    states |= bit(record.user_max_state) | (bit(record.user_max_state) - 1);
  return states ? states : 1;
}

std::uint32_t renumbered(const std::vector<int>& states, std::uint32_t set) {
  std::uint32_t own = 0;
  for (std::size_t i = 0; i < states.size(); ++i)
    if (set & bit(states[i])) own |= bit(static_cast<int>(i));
  return own;
}

/// States that lie between two of a cell, on the way from either to the other, join it.
std::uint32_t completed(const character_costs& costs, std::uint32_t cell) {
  std::uint32_t whole = cell;
  for (int s = 0; s < costs.count(); ++s)
    for (int u = 0; u < costs.count(); ++u) {
      if (s == u || !(cell & bit(s)) || !(cell & bit(u))) continue;
      const int direct = std::min(costs.of(s, u), costs.of(u, s));
      for (int t = 0; t < costs.count(); ++t)
        if (costs.of(s, t) + costs.of(t, u) <= direct) whole |= bit(t);
    }
  return whole;
}

void measure_table(character_costs& costs) {
  int least = forbidden_cost + 1;
  for (int i = 0; i < costs.count(); ++i)
    for (int j = 0; j < i; ++j) {
      const int there = costs.of(i, j);
      const int back = costs.of(j, i);
      costs.asymmetric = costs.asymmetric || there != back;
      for (const int cost : {there, back}) {
        if (cost > 0) least = std::min(least, cost);
        costs.most_cost = std::max(costs.most_cost, cost);
      }
    }
  if (least <= forbidden_cost) costs.least_cost = least;
  for (int via = 0; via < costs.count(); ++via)
    for (int i = 0; i < costs.count(); ++i)
      for (int j = 0; j < costs.count(); ++j)
        if (i != j)
          costs.detour_gain =
              std::max(costs.detour_gain, costs.of(i, j) - costs.of(i, via) - costs.of(via, j));
}

/// The links of cost 1 form a tree over all states, and path lengths along it are the costs.
void find_edges(character_costs& costs) {
  const int n = costs.count();
  if (costs.asymmetric || n < 2) return;
  std::vector<int> order = {0};
  std::vector<int> above(at(n), -1);
  std::vector<int> distance(at(n) * at(n), 0);
  std::uint32_t met = 1;
  for (std::size_t i = 0; i < order.size(); ++i) {
    const int s = order[i];
    for (int t = 0; t < n; ++t) {
      if (t == s || t == above[at(s)] || costs.of(s, t) != 1) continue;
      if (met & bit(t)) return;  // a circle
      met |= bit(t);
      above[at(t)] = s;
      for (const int u : order)
        distance[at(t * n + u)] = distance[at(u * n + t)] = distance[at(s * n + u)] + 1;
      order.push_back(t);
    }
  }
  if (order.size() != at(n) || !std::equal(distance.begin(), distance.end(), costs.cost.begin()))
    return;
  std::vector<std::uint32_t> far(at(n));
  for (std::size_t i = order.size(); i-- > 1;) {
    const int t = order[i];
    far[at(t)] |= bit(t);
    far[at(above[at(t)])] |= far[at(t)];
  }
  for (std::size_t i = 1; i < order.size(); ++i) costs.edges.push_back(far[at(order[i])]);
}

int common_cost_of(const character_costs& costs) {
  int common = 0;
  const auto is_observed = [&](int s) { return (costs.observed & bit(s)) != 0; };
  for (int i = 0; i < costs.count(); ++i)
    for (int j = 0; j < costs.count(); ++j) {
      if (i == j || !is_observed(i) || !is_observed(j)) continue;
      if (common != 0 && costs.of(i, j) != common) return 0;
      common = costs.of(i, j);
      if (common == 0) return 0;
    }
  for (int i = 0; i < costs.count(); ++i)
    for (int j = 0; j < costs.count(); ++j)
      if (i != j && !(is_observed(i) && is_observed(j)) && costs.of(i, j) < common) return 0;
  return common;
}

}  // namespace

std::uint32_t character_costs::in_matrix(std::uint32_t set) const {
  std::uint32_t all = 0;
  for (; set; set &= set - 1) all |= bit(states[at(std::countr_zero(set))]);
  return all;
}

character_costs costs_of_character(int character, std::span<const std::uint8_t> taxa) {
  const shared_costs set = costs_set_for(character);
  const cost_table table = set ? *set : costs_all_alike(1);
  character_costs costs;
  for (std::uint32_t rest = existing_states(character, table); rest; rest &= rest - 1)
    costs.states.push_back(std::countr_zero(rest));
  for (const int from : costs.states)
    for (const int to : costs.states) costs.cost.push_back(table.costs[at(from)][at(to)]);
  const std::uint32_t roots = matrix.characters[at(character)].root_states;
  if (roots) costs.root_states = renumbered(costs.states, roots);
  if (costs.root_states == bit(costs.count() - 1) * 2 - 1) costs.root_states = 0;
  measure_table(costs);
  find_edges(costs);
  for (int t = 0; t < matrix.ntax; ++t) {
    const std::uint32_t states = cell(t, character);
    const bool counts = (taxa.empty() || taxa[at(t)]) && !says_nothing(character, states);
    std::uint32_t own = counts ? renumbered(costs.states, states) : 0;
    if (!std::has_single_bit(own) && (matrix.fill_polymorphic || !costs.edges.empty()))
      own = completed(costs, own);
    costs.cells.push_back(own);
    costs.observed |= own;
  }
  if (costs.root_states == 0) costs.common_cost = common_cost_of(costs);
  return costs;
}

}  // namespace zeb
