// Diagrams of character-state trees: states joined by "-", "|", "/", "\" and "X" over some lines.
#pragma once

#include <string>

#include "matrix/matrix.h"

namespace zeb {

/// The costs that a diagram stands for: 1 along each line between two states, else the shortest
/// way. `highest` is the highest state that must be there beside those drawn. Errors: what can't be
/// drawn, lines that lead nowhere, states left out or not connected.
cost_table read_state_tree(const std::string& diagram, int highest);

}  // namespace zeb
