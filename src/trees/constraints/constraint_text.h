// The definitions of constraints as text.
#pragma once

#include <string>

namespace zeb {

/// The command, without its ";", that defines them again: taxa as numbers, a line for each tree or
/// group. "const -" without definitions.
std::string definitions_text();
/// The same in one line.
std::string definitions_line();
/// A list of them for people, in lines; taxa as other output shows them.
std::string definitions_list();

}  // namespace zeb
