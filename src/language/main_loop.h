// From the process arguments to the end of the main loop.
#pragma once

#include <string>

namespace zeb {

/// Runs the program: run mode from the first argument, defaults, main loop. Returns the exit
/// status, or ends the process.
int run_process(int argc, char** argv);
/// What all processes begin with: clocks, signals, level 0 of the input, under the name that is
/// shown for it, the arena.
void begin_process(std::string commands, const std::string& input_name);
/// `quit`: runs the hooks and ends the process with status 0.
[[noreturn]] void leave_program();

}  // namespace zeb
