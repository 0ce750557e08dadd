#include "matrix/costs/step_matrices.h"

#include <strings.h>

#include <algorithm>
#include <bit>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"

namespace zeb {

cost_table costs_all_alike(int cost) {
  cost_table table;
  for (std::size_t from = 0; from < 32; ++from)
    for (std::size_t to = 0; to < 32; ++to) table.costs[from][to] = from == to ? 0 : cost;
  return table;
}

cost_table costs_along_links(std::uint32_t states, std::span<const std::pair<int, int>> links) {
  cost_table table = costs_all_alike(1);
  table.states = states;
  const auto has = [states](std::size_t s) { return (states >> s & 1U) != 0; };
  for (std::size_t i = 0; i < 32; ++i)
    for (std::size_t j = 0; j < 32; ++j)
      if (i != j && has(i) && has(j)) table.costs[i][j] = forbidden_cost;
  for (const auto& [a, b] : links) table.costs[at(a)][at(b)] = table.costs[at(b)][at(a)] = 1;
  for (std::size_t via = 0; via < 32; ++via)
    for (std::size_t i = 0; i < 32; ++i)
      for (std::size_t j = 0; j < 32; ++j)
        if (has(via) && has(i) && has(j))
          table.costs[i][j] =
              std::min(table.costs[i][j], table.costs[i][via] + table.costs[via][j]);
  return table;
}

int states_of_table(const cost_table& costs) { return 32 - std::countl_zero(costs.states); }

shared_costs costs_set_for(int character) {
  return at(character) < matrix.costs.size() ? matrix.costs[at(character)] : nullptr;
}

void require_states(std::span<const std::uint8_t> flags) {
  for (int c = 0; c < matrix.nchar; ++c)
    if (flags[at(c)] && (matrix.characters[at(c)].type & (continuous_data | landmark_data)))
      error_end("Can't apply costs!", "Character", c, "has no states");
}

void set_costs(int character, shared_costs costs) {
  character_record& record = matrix.characters[at(character)];
  drop_packed_data();
  matrix.costs.resize(at(matrix.nchar));
  matrix.costs[at(character)] = std::move(costs);
  record.is_sankoff = 1;
  record.needs_recheck = 1;
}

void set_root_states(int character, std::uint32_t states) {
  character_record& record = matrix.characters[at(character)];
  if (record.root_states == states) return;
  drop_packed_data();
  record.root_states = states;
  record.needs_recheck = 1;
}

void set_user_steps(int character, std::int32_t min_steps, int max_state) {
  character_record& record = matrix.characters[at(character)];
  drop_packed_data();
  record.user_min_steps = min_steps;
  record.user_max_state = static_cast<std::int8_t>(max_state);
  record.needs_recheck = 1;
}

void keep_costs() { matrix.kept_costs = matrix.costs; }

void restore_kept_costs() {
  matrix.costs = matrix.kept_costs;
  for (character_record& record : matrix.characters)
    if (record.is_sankoff) record.needs_recheck = 1;
}

int add_step_matrix(step_matrix costs) {
  if (matrix.step_matrices.size() == at(most_step_matrices)) {
    error_end("Can't have more than", most_step_matrices, "step-matrices defined");
  }
  matrix.step_matrices.push_back(std::move(costs));
  return static_cast<int>(matrix.step_matrices.size()) - 1;
}

void set_step_matrix(int number, step_matrix costs) {
  if (number < 0 || number >= most_step_matrices) {
    error_end("Can't have more than", most_step_matrices, "step-matrices defined");
  }
  if (at(number) >= matrix.step_matrices.size()) matrix.step_matrices.resize(at(number) + 1);
  matrix.step_matrices[at(number)] = std::move(costs);
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

int find_step_matrix(const shared_costs& costs) {
  for (std::size_t i = 0; i < matrix.step_matrices.size(); ++i) {
    const shared_costs& named = matrix.step_matrices[i].costs;
    if (named && costs && (named == costs || *named == *costs)) return static_cast<int>(i);
  }
  return -1;
}

std::uint32_t states_in_cells(int character) {
  std::uint32_t all = 0;
  for (int t = 0; t < matrix.ntax; ++t) {
    const std::uint32_t states = cell(t, character);
    if (!says_nothing(character, states)) all |= states;
  }
  return all;
}

void check_costs_fit(int character, const cost_table& costs) {
  const int states = 32 - std::countl_zero(states_in_cells(character));
  if (states > states_of_table(costs))
    error_end("Can't apply costs!", text_of("Character %i has %i states", character, states));
}

void use_step_matrix(int character, int number) {
  if (matrix.characters[at(character)].type & (continuous_data | landmark_data)) return;
  const shared_costs& costs = matrix.step_matrices[at(number)].costs;
  check_costs_fit(character, *costs);
  set_costs(character, costs);
}

}  // namespace zeb
