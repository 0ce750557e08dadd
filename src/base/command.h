// The running command: its name, its clock, what happens when it is over, and where errors of it
// are caught.
#pragma once

#include <string>
#include <utility>

#include "base/process.h"

namespace zeb {

/// Before the first command it is "zeb*".
struct command_state {
  std::string command_name = "zeb*";
  std::string prompt = "zeb*>";
  bool is_argument = false;  // its word stood among the process arguments
  double start = 0;          // wall clock, seconds; what the user's pauses took is added to it
};
extern command_state command;

/// The command of this name is read from now on.
void begin_command(const char* name);
/// The same command goes by another name: it runs another one.
void rename_command(const char* name);
/// The clock starts anew, with the work itself.
void start_command_clock();
void set_command_is_argument(bool is_argument);
/// Seconds that the command has run, without pauses.
double command_seconds();

/// A command within a command: the outer one is the running command again when this goes.
class command_scope {
 public:
  command_scope() = default;
  ~command_scope() { command = std::move(saved_); }
  command_scope(const command_scope&) = delete;
  command_scope& operator=(const command_scope&) = delete;

 private:
  command_state saved_ = command;
};

/// The command's clock stands still while the user thinks.
class stopped_clock_scope {
 public:
  stopped_clock_scope() = default;
  ~stopped_clock_scope() { command.start += wall_clock() - since_; }
  stopped_clock_scope(const stopped_clock_scope&) = delete;
  stopped_clock_scope& operator=(const stopped_clock_scope&) = delete;

 private:
  double since_ = wall_clock();
};

/// Run before an error shows its message and at the end of every command, however it ended
/// (progress display, open drawings, parallel layer), in the order of registration. Registered
/// once, at start-up. May run twice for one command.
using command_over_hook = void (*)();
void add_command_over_hook(command_over_hook hook);
void command_is_over();

/// Thrown by `error_end` and by the interrupt path once the message is out and the input stack is
/// popped. Caught by the jump contexts only: the `try` blocks around the reading of one command,
/// the handler, and a pending `goto [` jump.
struct command_unwinding {};

/// Counts the jump contexts that stand, so that an error outside of all ends the process.
class jump_context {
 public:
  jump_context();
  ~jump_context();
  jump_context(const jump_context&) = delete;
  jump_context& operator=(const jump_context&) = delete;
};
bool in_jump_context();

/// The last step of errors and interrupts: throws to the innermost jump context.
[[noreturn]] void throw_to_jump_context();

}  // namespace zeb
