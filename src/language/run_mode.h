// What the process arguments ask for.
#pragma once

#include <string>

namespace zeb {

enum class run_mode {
  interactive,  // no argument: commands from the standard input
  commands,     // the arguments are commands
  background,   // the same, without a console
  parallel,     // works for a parent process
};
run_mode run_mode_of(int argc, char** argv);
/// All arguments with a blank between them and a newline at the end; empty without any.
std::string joined_arguments(int argc, char** argv);
/// What signals do: an arithmetic error ends the process with a clear message; a file that meets
/// the limit of its size doesn't.
void set_signals();

}  // namespace zeb
