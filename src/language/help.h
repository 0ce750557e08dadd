// Printing of the help texts.
#pragma once

#include <string_view>

namespace zeb {

/// Prints the help of one command, or says that there is none.
void print_command_help(std::string_view command_name);
/// Prints an embedded text; false if there is none of that name.
bool print_help_text(std::string_view name);
/// What the program is, and its version.
void show_banner();

}  // namespace zeb
