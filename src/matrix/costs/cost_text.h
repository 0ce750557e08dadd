// Costs and what belongs to them, as text: to look at, and as commands that set them again.
#pragma once

#include <string>
#include <vector>

#include "matrix/matrix.h"

namespace zeb {

/// The table of one character, in lines.
std::string costs_as_table(int character);
/// Commands that give characters their costs, root states and user-defined steps. `numbers`: what
/// each character is called there; -1 left out. A character that has a table and doesn't use it
/// isn't among them.
std::string costs_as_commands(const std::vector<int>& numbers);
/// "0 2.5" in lines.
std::string numbers_text(const std::vector<int>& numbers);
/// Several lines, one after the other, since the line buffer takes one.
void emit_lines(const std::string& text);

}  // namespace zeb
