// What a session holds, as the commands that make it again: this is how data and settings get to
// tasks.
#pragma once

#include <string>

#include "matrix/reading/matrix_writer.h"

namespace zeb {

/// The matrix with its settings, and the groups of taxa and characters.
std::string data_as_commands();
/// Part of the matrix, or other cells; see `write_request`.
std::string data_as_commands(const write_request& request);
/// All settings that differ from the defaults, those of the macro language first.
std::string settings_as_commands();

}  // namespace zeb
