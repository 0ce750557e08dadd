// One command that runs others.
#pragma once

#include <functional>
#include <string>

namespace zeb {

struct command_row;

/// Nested runs of a command string.
int command_string_depth();
/// Says whether a command runs; false: it is skipped. Raises an error for one that mustn't be
/// there.
using command_check = std::function<bool(const command_row& row)>;
/// Runs `text` (under 4,128 bytes) as commands from inside a handler, with the console silenced.
/// `check`, if given, is asked before each of them, also of those in files that are read.
void run_command_string(const std::string& text, const command_check& check = nullptr);
/// The same as a part of a search, which is to end where its time is out by then.
void run_search_string(const std::string& text, const command_check& check);
/// The error of texts that are too long.
void check_command_string(const std::string& text);

}  // namespace zeb
