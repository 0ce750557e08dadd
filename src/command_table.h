// The one table of commands, handed to the interpreter at start-up.
#pragma once

#include <span>

#include "language/interpreter.h"

namespace zeb {

/// All rows in the order of the language.
std::span<const command_row> all_commands();

}  // namespace zeb
