#include "base/process.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <vector>

#include "base/arena.h"
#include "base/errors.h"
#include "console/console.h"
#include "console/output.h"
#include "language/input.h"
#include "language/interpreter.h"

namespace zeb {

process_state process;
command_state command;
shell_settings settings;

namespace {

std::vector<command_over_hook> over_hooks;
std::vector<quit_hook> quit_hooks;
int jump_contexts = 0;

}  // namespace

jump_context::jump_context() { ++jump_contexts; }
jump_context::~jump_context() { --jump_contexts; }

void add_command_over_hook(command_over_hook hook) { over_hooks.push_back(hook); }
void add_quit_hook(quit_hook hook) { quit_hooks.push_back(hook); }

void command_is_over() {
  for (const command_over_hook hook : over_hooks) hook();
}

double wall_clock() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

void end_process(int status) {
  close_log();
  end_console();
  std::exit(status);  // NOLINT(concurrency-mt-unsafe)
}

void unwind_command() {
  flush_log();
  if (process.background) {
    report_line("... SOME ERROR OCCURED, QUITTING...");
    end_process(255);
  }
  unwind_interrupted_command();
}

void unwind_interrupted_command() {
  flush_log();
  if (jump_contexts == 0) {
    report_line("No jump buffer");
    end_process(255);
  }
  throw command_unwinding{};  // NOLINT(hicpp-exception-baseclass): carries nothing, caught by name
}

void end_background_run() {
  write_log("\nQuitting ZEB...\n");
  end_process(1);
}

void run_quit_hooks() {
  for (const quit_hook hook : quit_hooks) hook();
}

void quit_command() {
  if (take_up_execute_file()) return;
  process.run_loop = false;
  settings.watch = 0;
  run_quit_hooks();
  end_process(0);
}

}  // namespace zeb
