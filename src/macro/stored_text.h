// The text of `set x $...;`.
#pragma once

#include <string>

namespace zeb {

/// Reads up to ";" (consumed): blank runs shrink to one blank, "&N" is the character of code N,
/// ".," a semicolon. Variables in single or double quotes stay as they are written, to be expanded
/// when the string is used.
std::string read_stored_text();

}  // namespace zeb
