// How lines of output reach the console: cut at the screen's edge, ended as the terminal needs it,
// counted for paging.
#pragma once

#include <string_view>

namespace zeb {

void show_lines(std::string_view text);

}  // namespace zeb
