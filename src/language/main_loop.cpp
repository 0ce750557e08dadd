#include "language/main_loop.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "base/arena.h"
#include "base/command.h"
#include "base/errors.h"
#include "base/memory_reserve.h"
#include "base/process.h"
#include "base/safe_mode.h"
#include "base/signals.h"
#include "console/console.h"
#include "console/output.h"
#include "console/screen.h"
#include "language/batch.h"
#include "language/commands/procedure_command.h"
#include "language/help.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/methods.h"
#include "language/run_mode.h"
#include "language/steering.h"

namespace zeb {
namespace {

constexpr int status_of_failure = 255;
constexpr int status_of_wrong_call = 2;
constexpr int status_of_signal = 128;  // and the signal's number

std::string file_name_of(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return std::string(slash ? slash + 1 : path).substr(0, 159);
}

void greet(run_mode mode) {
  if (mode == run_mode::interactive) show_banner();
  if (mode == run_mode::commands) write_console("\nLUMA (Lineage Utility MAchine)\n\n\r");
}

[[noreturn]] void run_to_the_end() {
  while (interpreter.running && process.ended_by == 0 && !process.gave_up)
    run_in_jump_context(run_one_round);
  pop_all();
  leave_program();
}

// The standard input is nobody's here: level 0 is empty, and the file stands above it.
int run_file_in_batch(const std::string& file) {
  go_to_batch();
  show_on_standard_output();
  begin_process({}, "Standard Input");
  {
    const jump_context around_opening;
    try {
      read_commands_from(file);
    } catch (const command_unwinding&) {
    }
  }
  run_to_the_end();
}

int say(const std::string& text, std::FILE* where, int status) {
  return std::fputs(text.c_str(), where) < 0 || std::fflush(where) != 0 ? status_of_failure
                                                                        : status;
}

}  // namespace

void begin_process(std::string commands, const std::string& input_name) {
  start_memory_reserve();
  start_command_clock();
  start_stopwatch();
  set_signals();
  start_input(10, std::move(commands), input_name);
  run_in_jump_context([] { create_arena(arena.size); });
}

void leave_program() {
  // The console ends its input where a signal comes that ends the program.
  if (process.ended_by == 0 && noted_signal() != 0 && noted_signal() != SIGINT) {
    end_by_signal(noted_signal());
    forget_signal();
  }
  const int signal = process.ended_by;
  const memory_reserve_scope reserve;
  const jump_context around_saving;
  if (signal != 0) emit("\nEnded by ", signal_name(signal), "\n");
  run_quit_hooks();
  if (signal != 0) end_process(status_of_signal + signal);
  end_process(process.failed ? status_of_failure : 0);
}

int run_process(int argc, char** argv) {
  const std::string program_name = argc > 0 ? file_name_of(argv[0]) : "zeb";
  keep_command_line(argc, argv);
  const program_call call = read_call(argc, argv);
  if (call.safe) start_safe_mode(std::vector<std::string>(argv + std::min(argc, 1), argv + argc));
  switch (call.mode) {
    case run_mode::help:
      return say(usage_text(), stdout, 0);
    case run_mode::version:
      return say("zeb " ZEB_VERSION "\n", stdout, 0);
    case run_mode::refused:
      return say(program_name + ": " + call.refusal + " (see " + program_name + " --help)\n",
                 stderr, status_of_wrong_call);
    case run_mode::parallel:
      return hooks_of_language.run_task(argc, argv);
    case run_mode::batch:
      return run_batch(call.files, run_file_in_batch);
    case run_mode::background:
      go_to_background();
      remove_left_steering_files();
      break;
    case run_mode::interactive:
    case run_mode::commands:
      start_console();
  }
  begin_process(call.commands, call.commands.empty() ? "Standard Input" : program_name);
  greet(call.mode);
  run_to_the_end();
}

}  // namespace zeb
