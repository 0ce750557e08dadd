// State of the process: run mode, the main loop's flags, the interrupt check and the unwinding.
#pragma once

#include <string>

namespace zeb {

struct process_state {
  bool run_loop = false;            // the main loop goes on
  bool background = false;          // no console, no questions, errors are fatal
  bool slave = false;               // works for a parent; always with `background`
  int transport = 2;                // 0 PVM, 1 MPI, 2 none yet
  bool command_line_input = false;  // level 0 holds the process arguments
  int process_id = 0;
  double start_time = 0;       // wall clock, seconds
  double command_start = 0;    // wall clock, seconds; pauses are added to it
  double stopwatch_start = 0;  // `watch *`
  int interrupt_state = 0;     // 0 nothing, 1 stop the search and move on, 3 stop by time-out
  bool in_search = false;      // a search command runs
  int execute_counter = 1;     // numbers the copies of execute files; -1 forbids them
  std::string program_name;    // file name of the program, without its path
};
extern process_state process;

/// A search runs as long as one lives: the user's wish to stop sets `interrupt_state`, instead of
/// ending the command at once.
class search_running {
 public:
  search_running() { process.in_search = true; }
  ~search_running() { process.in_search = saved_; }
  search_running(const search_running&) = delete;
  search_running& operator=(const search_running&) = delete;

 private:
  bool saved_ = process.in_search;
};

/// The running command. Before the first it is "zeb*".
struct command_state {
  std::string command_name = "zeb*";
  std::string prompt = "zeb*>";
  bool is_argument = false;  // its word stood among the process arguments
};
extern command_state command;

/// 0 waits for a key, 1 polls, 2 interrupts now, 100 looks at the steering files now. Interrupts by
/// throwing `command_unwinding`, or inside a search by setting `interrupt_state`.
void check_interrupt(int mode);

/// Runs the program: run mode from the first argument, defaults, main loop. Returns the exit
/// status.
int run_process(int argc, char** argv);
/// `quit`: ends the process with status 0, or takes up the execute file of a background run.
void quit_command();
/// Ends the process: closes files, the log and the console.
[[noreturn]] void end_process(int status);
/// What `quit` must close, in the order of registration: open drawings, tree files, slaves.
using quit_hook = void (*)();
void add_quit_hook(quit_hook hook);
void run_quit_hooks();

/// The last step of errors and interrupts: cleans up and throws to the innermost jump context.
/// Ends the process in the background.
[[noreturn]] void unwind_command();
/// The same where a background run goes on: its user stopped it and left new instructions.
[[noreturn]] void unwind_interrupted_command();
/// The user's stop: pops all input and unwinds, or sets `interrupt_state` in a search.
void user_interrupt();
/// The end of the instructions of a background run: runs the execute file if there is one (true),
/// else ends the process with status 1.
bool take_up_execute_file();
void end_background_run();
/// Runs the "command is over" hooks.
void command_is_over();

/// Counts the jump contexts that stand, so that an error outside of all ends the process.
class jump_context {
 public:
  jump_context();
  ~jump_context();
  jump_context(const jump_context&) = delete;
  jump_context& operator=(const jump_context&) = delete;
};

/// Seconds of the wall clock, with a fraction.
double wall_clock();

/// Run before an error shows its message and at the end of every command, however it ended
/// (progress display, open drawings, parallel layer), in the order of registration. Registered
/// once, at start-up. May run twice for one command.
using command_over_hook = void (*)();
void add_command_over_hook(command_over_hook hook);

/// The settings of small commands, each with its default.
struct shell_settings {
  bool report = true;  // progress and chatter
  bool warn = false;   // ask before going on at warnings
  bool beep = true;
  int break_polling = 1;             // `break`: <esc>, "p" and "m" are polled; 0 off
  int echo = 0;                      // 1 on; 3 marked by an error for one round
  bool echo_console_to_log = false;  // `echo [`: console lines go to the log
  int watch = 0;                     // 1 on; 2 on but not for this command
  bool watch_ram = false;            // `watch [`
  bool macros = false;               // the macro language is on
  bool progress_bars = true;         // `report [`: bars and counters of long commands
  // `report +T/R/N`: a line of a search's status is kept every so often; 0 never.
  int status_seconds = 0;
  int status_replications = 0;
  int status_trees = 0;
};
extern shell_settings settings;

}  // namespace zeb
