// The log: a copy of the output in a file.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace zeb {

struct log_state {
  std::FILE* stream = nullptr;  // null: no log
  std::string name;
  std::string waiting;  // text that isn't in the file yet
};
extern log_state log_file;

/// Closes the log there is and opens another; "stdout" is the standard output. False: no log now.
bool open_log(const std::string& name, bool append);
/// Writes to the log only, whatever the output mask says.
void write_log(std::string_view text);
/// Writes out what waits: at the end of every command, on errors, before every exit.
void flush_log();
/// Closes the log, if any.
void close_log();

}  // namespace zeb
