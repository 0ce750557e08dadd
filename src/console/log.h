// The log: a copy of the output in a file.
#pragma once

#include <set>
#include <string>
#include <string_view>

#include "base/output_file.h"

namespace zeb {

struct log_state {
  output_file file;  // not open: no log
  std::string name;
  std::string waiting;           // text that isn't in the file yet
  bool fresh = false;            // nothing but the command that opened it has been written
  std::set<std::string> former;  // paths of the logs of this run
};
extern log_state log_file;

inline bool log_is_open() { return log_file.file.is_open(); }
/// Closes the log there is and opens another; "stdout" is the standard output. False: no log now. A
/// new log takes the place of a file of its name when a command has written to it and is over: what
/// one command writes in place of its own former output is whole, or isn't there.
bool open_log(const std::string& name, bool append);
/// Was the file of this name, which is closed by now, read in this run, and isn't a log of it? A
/// new log would destroy data.
bool was_input_file(const std::string& name);
/// Writes to the log only, whatever the output mask says.
void write_log(std::string_view text);
/// Writes out what waits: at the end of every command, on errors, before every exit.
void flush_log();
/// Closes the log, if any.
void close_log();

}  // namespace zeb
