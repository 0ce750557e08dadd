// Printing of the help texts.
#pragma once

#include <string_view>

namespace zeb {

/// Prints the help of one command, or says that there is none.
void print_command_help(std::string_view command_name);

}  // namespace zeb
