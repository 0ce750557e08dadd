#include "matrix/step_matrices.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <bit>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "matrix/smallest_hitting_set.h"

namespace zeb {
namespace {

constexpr std::size_t most_step_matrices = 32;

std::vector<std::uint32_t> telling_cells(int character, std::span<const std::uint8_t> taxa) {
  std::vector<std::uint32_t> cells;
  for (int t = 0; t < matrix.ntax; ++t) {
    const std::uint32_t states = cell(t, character);
    if ((taxa.empty() || taxa[at(t)]) && !says_nothing(character, states)) cells.push_back(states);
  }
  return cells;
}

std::uint32_t union_of(const std::vector<std::uint32_t>& cells) {
  std::uint32_t all = 0;
  for (const std::uint32_t states : cells) all |= states;
  return all;
}

// Cost of a change; 1 between different states that the step matrix doesn't know.
std::int64_t cost_of_change(const step_matrix& costs, int from, int to) {
  if (from < costs.nstates && to < costs.nstates) {
    return costs.costs[at(from) * at(costs.nstates) + at(to)];
  }
  return from == to ? 0 : 1;
}

int states_in(const step_matrix& costs, const std::vector<std::uint32_t>& cells) {
  return std::max(costs.nstates, 32 - std::countl_zero(union_of(cells)));
}

// The state at the root of the bush from which all cells are reached most cheaply.
std::int64_t bush_cost(const step_matrix& costs, const std::vector<std::uint32_t>& cells) {
  std::int64_t least = -1;
  for (int root = 0; root < states_in(costs, cells); ++root) {
    std::int64_t sum = 0;
    for (const std::uint32_t states : cells) {
      std::int64_t nearest = forbidden_cost;
      for (std::uint32_t rest = states; rest; rest &= rest - 1) {
        nearest = std::min(nearest, cost_of_change(costs, root, std::countr_zero(rest)));
      }
      sum += nearest;
    }
    if (least < 0 || sum < least) least = sum;
  }
  return std::max<std::int64_t>(0, least);
}

using distance_table = std::array<std::array<std::int64_t, 32>, 32>;

// Cheapest ways between states in either direction, over any number of changes (Floyd 1962).
distance_table distances(const step_matrix& costs, int count) {
  distance_table table{};
  for (int i = 0; i < count; ++i) {
    for (int j = 0; j < count; ++j) {
      table[at(i)][at(j)] =
          i == j ? 0 : std::min(cost_of_change(costs, i, j), cost_of_change(costs, j, i));
    }
  }
  const std::size_t states = at(count);
  for (std::size_t via = 0; via < states; ++via) {
    for (std::size_t i = 0; i < states; ++i) {
      auto& row = table[i];
      for (std::size_t j = 0; j < states; ++j) row[j] = std::min(row[j], row[via] + table[via][j]);
    }
  }
  return table;
}

// Some h states, each in one cell at least, are joined by the changes on any tree. That takes h - 1
// changes; a walk round the tree goes along each change twice and between h pairs of states; and
// two states that stand alone in cells are as far apart on the tree as their distance.
std::int64_t least_cost(const step_matrix& costs, const std::vector<std::uint32_t>& cells) {
  const std::int64_t joined = smallest_hitting_set(cells);
  if (joined < 2) return 0;
  const int count = states_in(costs, cells);
  const distance_table distance = distances(costs, count);
  std::uint32_t alone = 0;
  for (const std::uint32_t states : cells) {
    if (std::has_single_bit(states)) alone |= states;
  }
  const std::uint32_t observed = union_of(cells);
  const auto holds = [](std::uint32_t set, std::size_t state) { return (set >> state & 1U) != 0; };
  std::int64_t cheapest = forbidden_cost;
  std::int64_t nearest = forbidden_cost;
  std::int64_t farthest = 0;
  for (std::size_t i = 0; i < at(count); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      cheapest = std::min(cheapest, distance[i][j]);
      if (holds(observed, i) && holds(observed, j)) nearest = std::min(nearest, distance[i][j]);
      if (holds(alone, i) && holds(alone, j)) farthest = std::max(farthest, distance[i][j]);
    }
  }
  return std::max({(joined - 1) * cheapest, (joined * nearest + 1) / 2, farthest});
}

}  // namespace

int add_step_matrix(step_matrix costs) {
  if (matrix.step_matrices.size() == most_step_matrices) {
    error_end("Can't have more than", most_step_matrices, "step-matrices defined");
  }
  ALWAYS_CHECK(costs.costs.size() == at(costs.nstates) * at(costs.nstates),
               "a step matrix isn't square");
  matrix.step_matrices.push_back(std::move(costs));
  return static_cast<int>(matrix.step_matrices.size()) - 1;
}

int find_step_matrix(std::string_view name) {
  for (std::size_t i = matrix.step_matrices.size(); i-- > 0;) {
    const std::string& known = matrix.step_matrices[i].name;
    if (known.size() == name.size() && strncasecmp(known.data(), name.data(), name.size()) == 0) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

void use_step_matrix(int character, int number) {
  character_record& record = matrix.characters[at(character)];
  if (record.type & (continuous_data | landmark_data)) return;
  const int states = 32 - std::countl_zero(union_of(telling_cells(character, {})));
  if (states > matrix.step_matrices[at(number)].nstates) {
    error_end("Can't apply costs!", text_of("Character %i has %i states", character, states));
  }
  drop_packed_data();
  record.is_sankoff = 1;
  record.step_matrix = static_cast<std::int8_t>(number);
  record.needs_recheck = 1;
}

step_range cost_steps(int character, std::span<const std::uint8_t> taxa) {
  const character_record& record = matrix.characters[at(character)];
  const std::vector<std::uint32_t> cells = telling_cells(character, taxa);
  static const step_matrix all_changes_alike;
  const step_matrix& costs =
      record.step_matrix < 0 ? all_changes_alike : matrix.step_matrices[at(record.step_matrix)];
  const auto clipped = [](std::int64_t steps) {
    return static_cast<int>(std::min<std::int64_t>(steps, 2147483647));
  };
  return {clipped(least_cost(costs, cells)), clipped(bush_cost(costs, cells))};
}

}  // namespace zeb
