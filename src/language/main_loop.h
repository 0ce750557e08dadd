// From the process arguments to the end of the main loop.
#pragma once

namespace zeb {

/// Runs the program: run mode from the first argument, defaults, main loop. Returns the exit
/// status, or ends the process.
int run_process(int argc, char** argv);
/// `quit`: runs the hooks and ends the process with status 0.
[[noreturn]] void leave_program();

}  // namespace zeb
