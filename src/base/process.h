// The process: how it runs, its clock and its end.
#pragma once

namespace zeb {

struct process_state {
  bool background = false;  // no console, no questions, errors are fatal
  bool slave = false;       // works for a parent; always with `background`
};
extern process_state process;

/// From here on there is nobody to ask, and nobody to read what the console would show.
void go_to_background();

/// Seconds of the wall clock, with a fraction.
double wall_clock();

/// What `quit` must close, in the order of registration: open drawings, tree files, slaves.
using quit_hook = void (*)();
void add_quit_hook(quit_hook hook);
void run_quit_hooks();

/// Ends the process: closes files, the log and the console.
[[noreturn]] void end_process(int status);

}  // namespace zeb
