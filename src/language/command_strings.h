// One command that runs others.
#pragma once

#include <string>

namespace zeb {

struct command_row;

/// Nested runs of a command string.
int command_string_depth();
/// Raises an error for a command that mustn't run.
using command_check = void (*)(const command_row& row);
/// Runs `text` (under 4,128 bytes) as commands from inside a handler, with the console silenced.
/// `check`, if given, is asked before each of them.
void run_command_string(const std::string& text, command_check check = nullptr);
/// The error of texts that are too long.
void check_command_string(const std::string& text);

}  // namespace zeb
