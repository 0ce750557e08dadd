// One command that runs others.
#pragma once

#include <string>

namespace zeb {

/// Nested runs of a command string.
int command_string_depth();
/// Runs `text` (under 4,128 bytes) as commands from inside a handler, with the console silenced.
void run_command_string(const std::string& text);

}  // namespace zeb
