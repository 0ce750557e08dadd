// Costs of changes between states, kept with the matrix and shared by the characters that use them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "matrix/matrix.h"

namespace zeb {

/// Keeps a step matrix with the data; returns its number. Errors: too many of them.
int add_step_matrix(step_matrix costs);
/// Number of the last step matrix of that name (case ignored); -1 none.
int find_step_matrix(std::string_view name);

/// From now on the character's changes cost what this step matrix says. Continuous and landmark
/// characters are left alone. Error: the character has states beyond those of the step matrix.
void use_step_matrix(int character, int number);

/// Steps of a character with a step matrix over the flagged taxa. The minimum is a bound from
/// below; the maximum is the cost on the bush.
step_range cost_steps(int character, std::span<const std::uint8_t> taxa);

}  // namespace zeb
