// Commands that search and nothing else.
#pragma once

#include "language/interpreter.h"

namespace zeb {

/// Does the command search, or choose among the trees found? Then nothing but trees stays of it
/// within a search.
bool only_searches(const command_row& row);

}  // namespace zeb
