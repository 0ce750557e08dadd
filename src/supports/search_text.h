// Commands in brackets, that a command of this room is to search by.
#pragma once

#include <string>

namespace zeb {

/// What stands from "[", which is next, up to the bracket that closes it; brackets within belong to
/// it. Ends in a semicolon; empty where there is nothing. `missing` is the error at an open end.
std::string read_bracketed_search(const char* missing);

}  // namespace zeb
