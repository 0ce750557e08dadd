#include "base/command.h"

#include <new>
#include <vector>

#include "base/process.h"

namespace zeb {

command_state command;

namespace {

struct end_of_command {
  std::vector<command_over_hook> hooks;
  bool hooks_run = false;
  int jump_contexts = 0;
};
end_of_command at_end;

}  // namespace

void begin_command(const char* name) {
  command.command_name = name;
  command.prompt = command.command_name + ">";
}

void rename_command(const char* name) { command.command_name = name; }

void start_command_clock() { command.start = wall_clock(); }

void set_command_is_argument(bool is_argument) { command.is_argument = is_argument; }

double command_seconds() { return wall_clock() - command.start; }

void add_command_over_hook(command_over_hook hook) { at_end.hooks.push_back(hook); }

void command_is_over() {
  if (at_end.hooks_run) return;  // one of them failed
  struct running {
    running() { at_end.hooks_run = true; }
    ~running() { at_end.hooks_run = false; }
  } const scope;
  for (const command_over_hook hook : at_end.hooks) {
    try {
      hook();
    } catch (const std::bad_alloc&) {
      // What there is no memory for now is done after the next command.
    }
  }
}

jump_context::jump_context() { ++at_end.jump_contexts; }
jump_context::~jump_context() { --at_end.jump_contexts; }
bool in_jump_context() { return at_end.jump_contexts > 0; }

void throw_to_jump_context() {
  throw command_unwinding{};  // NOLINT(hicpp-exception-baseclass): carries nothing, caught by name
}

}  // namespace zeb
