// Random tables of costs, put into the program's matrix and kept for the oracle beside it.
#pragma once

#include <algorithm>
#include <bit>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "matrix/costs/step_matrices.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "property/random_matrix.h"
#include "support/cost_oracle.h"

namespace zeb_test {

enum class cost_shape { uniform, tree, metric, symmetric, asymmetric, forbidding };
constexpr int cost_shapes = 6;

inline void close_over_detours(std::vector<std::vector<long>>& cost) {
  const std::size_t n = cost.size();
  for (std::size_t k = 0; k < n; ++k)
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j)
        cost[i][j] = std::min(cost[i][j], cost[i][k] + cost[k][j]);
}

inline naive::change_costs random_costs(cost_shape shape, int states, std::mt19937& g) {
  const auto n = static_cast<std::size_t>(states);
  naive::change_costs costs{states, {}, 0};
  const int most = draw(g, 1, 9);
  const long common = draw(g, 1, 4);
  costs.cost.assign(n, std::vector<long>(n, shape == cost_shape::tree ? 1000 : common));
  for (std::size_t i = 0; i < n; ++i) {
    costs.cost[i][i] = 0;
    if (shape == cost_shape::tree && i > 0) {
      const auto above = static_cast<std::size_t>(draw(g, 0, static_cast<int>(i) - 1));
      costs.cost[i][above] = costs.cost[above][i] = 1;
    }
    for (std::size_t j = 0; j < i && shape > cost_shape::tree; ++j) {
      costs.cost[i][j] = costs.cost[j][i] = draw(g, shape == cost_shape::metric ? 1 : 0, most);
      if (shape >= cost_shape::asymmetric) costs.cost[j][i] = draw(g, 0, most);
      if (shape == cost_shape::forbidding && chance(g, 0.3)) costs.cost[i][j] = naive::forbidden;
    }
  }
  if (shape == cost_shape::tree || shape == cost_shape::metric ||
      (shape == cost_shape::asymmetric && chance(g, 0.5)))
    close_over_detours(costs.cost);
  return costs;
}

inline zeb::shared_costs as_table(const naive::change_costs& costs) {
  zeb::cost_table table = zeb::costs_all_alike(1);
  for (int i = 0; i < costs.states; ++i) {
    table.states |= 1U << i;
    for (int j = 0; j < costs.states; ++j)
      table.costs[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] =
          static_cast<std::int32_t>(
              costs.cost[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]);
  }
  return std::make_shared<const zeb::cost_table>(table);
}

/// The data with what the program and the oracle know of their costs. Characters without costs are
/// as in the other tests; continuous ones come first.
struct mixed_matrix {
  std::vector<int> weight;
  std::vector<bool> additive;
  std::vector<std::vector<std::uint32_t>> cells;           // by character, then taxon
  std::vector<std::vector<std::pair<long, long>>> ranges;  // empty: not continuous
  std::vector<naive::change_costs> costs;                  // no table: without costs

  /// Unweighted; in thousandths for continuous characters.
  long steps(std::size_t c, const naive::rooted_tree& tree) const {
    if (!ranges[c].empty()) return naive::least_change(tree, ranges[c]);
    if (!costs[c].cost.empty()) return naive::least_cost(tree, cells[c], costs[c]);
    return naive::least_steps(tree, cells[c], additive[c]);
  }
  double length(const naive::rooted_tree& tree) const {
    double sum = 0;
    for (std::size_t c = 0; c < cells.size(); ++c)
      sum += static_cast<double>(weight[c] * steps(c, tree)) * (ranges[c].empty() ? 1.0 : 0.001);
    return sum;
  }
};

struct mixed_shape {
  int ntax = 7;
  int plain = 3;
  int with_costs = 3;
  int continuous = 0;
  int states = 4;
  double missing = 0.1;
  double polymorphic = 0.1;
  double rooted = 0.2;  // share of characters with costs whose root is bound
};

inline std::vector<std::uint32_t> random_cells(const mixed_shape& shape, std::mt19937& g) {
  data_shape one;
  one.ntax = shape.ntax;
  one.states = shape.states;
  one.missing = shape.missing;
  one.polymorphic = shape.polymorphic;
  return random_character(one, g);
}

/// Are the costs path lengths along a tree with edges of 1?
inline bool is_state_tree(const naive::change_costs& costs) {
  const std::size_t n = costs.cost.size();
  std::vector<std::vector<long>> paths(n, std::vector<long>(n, 1000));
  std::size_t links = 0;
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < n; ++j) {
      if (i == j || costs.cost[i][j] == 1) paths[i][j] = i == j ? 0 : 1;
      links += i < j && costs.cost[i][j] == 1;
    }
  close_over_detours(paths);
  return links == n - 1 && paths == costs.cost;
}

/// The cells of a tree of states are ranges of it for the program; the oracle gets them so, too.
inline void complete_cells(const naive::change_costs& costs, std::vector<std::uint32_t>& cells) {
  for (std::uint32_t& cell : cells) {
    std::uint32_t whole = cell;
    for (int t = 0; t < costs.states; ++t)
      for (int s = 0; s < costs.states; ++s)
        for (int u = 0; u < costs.states; ++u)
          if ((cell >> s & 1) && (cell >> u & 1) &&
              costs.cost[static_cast<std::size_t>(s)][static_cast<std::size_t>(t)] +
                      costs.cost[static_cast<std::size_t>(t)][static_cast<std::size_t>(u)] ==
                  costs.cost[static_cast<std::size_t>(s)][static_cast<std::size_t>(u)])
            whole |= 1U << t;
    cell = whole;
  }
}

inline mixed_matrix fill_mixed(const mixed_shape& shape, std::mt19937& g) {
  mixed_matrix data;
  const int nchar = shape.continuous + shape.plain + shape.with_costs;
  zeb::wipe_matrix();
  zeb::matrix.cell_bytes = 4;
  zeb::matrix.state_mask = 0xffffffffU;
  zeb::begin_matrix(shape.ntax, nchar);
  for (int c = 0; c < nchar; ++c) {
    data.weight.push_back(chance(g, 0.5) ? 1 : draw(g, 1, 5));
    data.additive.push_back(c >= shape.continuous && c < shape.continuous + shape.plain &&
                            chance(g, 0.3));
    data.cells.push_back(random_cells(shape, g));
    data.ranges.emplace_back();
    data.costs.push_back({0, {}, 0});
    for (int t = 0; t < shape.ntax; ++t) {
      const std::uint32_t states = data.cells.back()[static_cast<std::size_t>(t)];
      if (c >= shape.continuous && states) zeb::set_cell(t, c, states);
      if (c >= shape.continuous) continue;
      const long low = draw(g, 0, 60);
      const long high = chance(g, 0.5) ? low : low + draw(g, 0, 20);
      data.ranges.back().push_back(states ? std::pair(low, high) : std::pair(1L, 0L));
      if (states)
        zeb::set_cell(t, c,
                      static_cast<std::uint32_t>(low) | static_cast<std::uint32_t>(high) << 16);
      else
        zeb::set_cell(t, c, zeb::missing_continuous);
    }
    if (c < shape.continuous) zeb::set_character_type(c, zeb::continuous_data);
  }
  zeb::finish_matrix();
  for (int c = 0; c < nchar; ++c) {
    zeb::character_record& record = zeb::matrix.characters[static_cast<std::size_t>(c)];
    record.weight = data.weight[static_cast<std::size_t>(c)];
    record.additive = data.additive[static_cast<std::size_t>(c)];
    record.needs_recheck = 1;
    if (c < shape.continuous + shape.plain) continue;
    const auto kind = static_cast<cost_shape>(draw(g, 0, cost_shapes - 1));
    std::vector<std::uint32_t>& cells = data.cells[static_cast<std::size_t>(c)];
    std::uint32_t observed = 0;
    for (const std::uint32_t cell : cells) observed |= cell;
    const int states = std::max({2, 32 - std::countl_zero(observed), draw(g, 2, shape.states)});
    naive::change_costs& costs = data.costs[static_cast<std::size_t>(c)];
    costs = random_costs(kind, states, g);
    zeb::set_costs(c, as_table(costs));
    if (chance(g, shape.rooted))
      record.root_states = costs.root_states =
          static_cast<std::uint32_t>(draw(g, 1, (1 << states) - 1));
    if (is_state_tree(costs)) complete_cells(costs, cells);
  }
  return data;
}

}  // namespace zeb_test
