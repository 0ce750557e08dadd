// Commands that search and nothing else.
#pragma once

#include "language/interpreter.h"

namespace zeb {

/// Does the command search, or choose among the trees found? Within a search it then leaves nothing
/// behind but trees.
bool only_searches(const command_row& row);

}  // namespace zeb
