// Safe mode, for scripts and data of others: no shell, nothing written but new files below the
// folder where the program was started, nothing read outside of it but what the user named.
#pragma once

#include <set>
#include <span>
#include <string>

namespace zeb {

/// Written by the functions of this file only. Paths are absolute and lead through no links.
struct safe_mode_state {
  bool on = false;
  std::string folder;             // where the program was started
  std::set<std::string> named;    // files that the command line names
  std::set<std::string> written;  // by this run
};
extern safe_mode_state safe_mode;

/// From here on. `words` are those of the command line, whose files may be read wherever they are.
void start_safe_mode(std::span<const std::string> words);
/// Why the file may not be read, or the folder entered; empty: it may.
std::string refusal_of_reading(const std::string& name);
/// Why nothing may be written to the file; no link in its place is followed.
std::string refusal_of_writing(const std::string& name);
/// The run's own file, which it may write again.
void note_written_file(const std::string& name);

}  // namespace zeb
