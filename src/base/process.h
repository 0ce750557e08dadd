// The process: how it runs, its clock and its end.
#pragma once

#include <string>

namespace zeb {

struct process_state {
  bool background = false;  // no console, no questions, errors are fatal
  bool slave = false;       // works for a parent; always with `background`
  bool batch = false;       // runs a file: nobody to ask, errors end it, output is for a program
  bool failed = false;      // a command of a batch run failed, or an output was lost
  bool memory_refused = false;  // the last error was for want of memory
  bool gave_up = false;         // ends before its commands do, since it can't go on
  int ended_by = 0;             // the signal that ends the process after the running command
};
extern process_state process;

/// From here on there is nobody to ask, and nobody to read what the console would show.
void go_to_background();
/// The same for a process that works for a parent.
void become_task();
struct base_hooks;
/// From here on the process is a copy of one that goes on: it has nobody to ask, and tells errors
/// and looks for a stop by these.
void become_worker(const base_hooks& hooks);

void go_to_batch();
/// A batch run that goes on after an error, at a label of its own, ends as a failed one.
void note_failure();

void end_by_signal(int signal);

/// Seconds of the wall clock, with a fraction.
double wall_clock();

/// What `quit` does first, in the order of registration: a last saving of trees, and the like.
using quit_hook = void (*)();
void add_quit_hook(quit_hook hook);
void run_quit_hooks();
/// What is closed whenever the process ends: open drawings, tree files.
void add_closing_hook(quit_hook hook);

/// Something that the user counts on couldn't be written, too late for an error: told on the
/// standard error when the process ends, with a status of failure.
void note_loss(const std::string& what);

void note_memory_refused();
/// The process can't go on, and says why when it ends.
void give_up_process(const std::string& why);

/// Ends the process: closes files, the console and the log.
[[noreturn]] void end_process(int status);

}  // namespace zeb
