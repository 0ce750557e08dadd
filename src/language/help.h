// Printing of the help texts.
#pragma once

#include <string_view>

namespace zeb {

/// Prints the help of one command, or says that there is none.
void print_command_help(std::string_view command_name);
/// Prints an embedded text; false if there is none of that name.
bool print_help_text(std::string_view name);
/// Prints the entry of an expression function whose name begins with `word`; false for none.
/// Registered by the macro language.
void set_expression_help(bool (*print)(std::string_view word));

}  // namespace zeb
