// What the console is given by the rooms above at start-up.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

/// The words that may stand before the cursor in place of what begins at byte `begin` of the line.
struct completion {
  std::size_t begin = 0;
  std::vector<std::string> words;
};

struct console_hooks {
  /// What the line up to the cursor can go on with.
  completion (*complete)(std::string_view before_cursor) = nullptr;
};
extern console_hooks hooks_of_console;

}  // namespace zeb
