// What the words after the program's name ask for: all of them are read here, and nowhere else.
#pragma once

#include <string>
#include <vector>

namespace zeb {

enum class run_mode {
  interactive,  // no argument: commands from the standard input
  commands,     // the arguments are commands
  background,   // the same, without a console
  parallel,     // works for a parent process
  batch,        // the arguments are run files
  help,         // tells how to call the program
  version,
  refused,  // an option that there isn't
};

struct program_call {
  run_mode mode = run_mode::interactive;
  bool safe = false;               // scripts of others may do no harm
  std::string refusal;             // why `mode` is `refused`
  std::string commands;            // the words from the first that is no option, as one line
  std::vector<std::string> files;  // the same words in a batch run
};
program_call read_call(int argc, char** argv);
/// The answer to `--help`.
std::string usage_text();
/// What signals do: those that stop the program are noted; an arithmetic error ends the process
/// with a clear message; a file that meets the limit of its size doesn't.
void set_signals();

}  // namespace zeb
