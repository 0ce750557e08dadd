// Tables of costs of changes between states: those of characters, and those that have names.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "matrix/matrix.h"

namespace zeb {

constexpr int most_step_matrices = 32;

/// Every change costs `cost`.
cost_table costs_all_alike(int cost);
/// The table over some states that are joined by links of cost 1: a change costs the shortest way,
/// `forbidden_cost` where there is none.
cost_table costs_along_links(std::uint32_t states, std::span<const std::pair<int, int>> links);
/// The number of states up to the highest one that the table knows.
int states_of_table(const cost_table& costs);

/// The costs of a character; null where none were set.
shared_costs costs_set_for(int character);
/// Error: a flagged character (a byte each) is continuous or of landmarks.
void require_states(std::span<const std::uint8_t> flags);
/// From now on the character's changes cost this. It must have states.
void set_costs(int character, shared_costs costs);
/// The states that the root may have; 0 any.
void set_root_states(int character, std::uint32_t states);
/// What homoplasy counts from, and the highest state that exists; -1 as the cells have it.
void set_user_steps(int character, std::int32_t min_steps, int max_state);
/// Makes them those of `ckeep`, and back.
void keep_costs();
void restore_kept_costs();

/// Keeps a step matrix with the data under the first free number, or the one given; returns its
/// number. Errors: too many of them.
int add_step_matrix(step_matrix costs);
void set_step_matrix(int number, step_matrix costs);
/// Number of the last step matrix of that name (case ignored); -1 none.
int find_step_matrix(std::string_view name);
/// The same by the costs that a character has; -1 where they have no name.
int find_step_matrix(const shared_costs& costs);

/// Union of the states of all cells that say something.
std::uint32_t states_in_cells(int character);
/// Error: the character has states beyond those of the table.
void check_costs_fit(int character, const cost_table& costs);
/// Gives the character the costs of a step matrix. Continuous and landmark characters are left
/// alone. Error: the character has states beyond those of the step matrix.
void use_step_matrix(int character, int number);

}  // namespace zeb
