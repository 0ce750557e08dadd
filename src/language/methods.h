// The section on methods: what a reader of a paper needs to repeat the work. Each room tells its
// part.
#pragma once

#include <string>
#include <vector>

namespace zeb {

enum class methods_part {
  data,      // what the data are
  choices,   // commands, without their ";", that set what differs from the defaults
  searches,  // how searches work, and what those of this run found
  session,   // commands like those of the choices, for what changes no result: tasks get them
};
using methods_lines = std::vector<std::string> (*)();
/// The lines come in the order of registration.
void add_methods(methods_part part, methods_lines lines);

/// The settings of all rooms that differ from their defaults.
std::vector<std::string> changed_settings();
/// The same for how things are read and shown.
std::vector<std::string> session_settings();

/// The process arguments, to be told as a shell would take them.
void keep_command_line(int argc, const char* const* argv);

/// Writes the section as one `quote`, so that a log that holds it can be read as a run file.
void write_methods();

}  // namespace zeb
