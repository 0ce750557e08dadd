// Costs and what belongs to them, as text: to look at, and as commands that set them again.
#pragma once

#include <string>
#include <vector>

#include "matrix/matrix.h"

namespace zeb {

/// The table of one character, in lines.
std::string costs_as_table(int character);
/// Commands that give characters their costs (also where they aren't in use), root states and
/// user-defined steps. `numbers`: what each character is called there; -1 left out.
std::string costs_as_commands(const std::vector<int>& numbers);
/// Commands that define the step matrices that have names.
std::string step_matrices_as_commands();
/// Commands, without ";", of the settings for all costs that aren't the default ones.
std::vector<std::string> cost_settings();
/// All costs of the data, in lines for the section on methods.
std::vector<std::string> costs_in_words();
/// "0 2.5" in lines.
std::string numbers_text(const std::vector<int>& numbers);
/// Several lines, one after the other, since the line buffer takes one.
void emit_lines(const std::string& text);

}  // namespace zeb
