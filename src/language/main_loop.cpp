// From the process arguments to the end of the main loop.
#include <unistd.h>

#include <cstring>
#include <new>

#include "base/arena.h"
#include "base/errors.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/console.h"
#include "console/output.h"
#include "language/commands/commands.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/startup.h"

namespace zeb {
namespace {

void report_time() {
  emit(
      text_of("%s %.2f secs.", command.command_name.c_str(), wall_clock() - process.command_start));
  if (settings.watch_ram) emit(" (", megabytes_text(static_cast<double>(arena.peak_ram)), ")");
  emit("\n");
  view_to_end();
}

void run_pending_jump() {
  if (!input.jump_pending) return;
  input.jump_pending = false;
  if (macro_hooks.run_pending_jump) run_in_jump_context(macro_hooks.run_pending_jump);
  input.jump_pending = false;
}

void one_round() {
  process.interrupt_state = 0;
  process.in_search = false;
  run_pending_jump();
  if (settings.watch == 1) arena.peak_ram = arena_in_use();
  run_one_command();
  if (arena.peak_ram > arena.peak_ram_ever) arena.peak_ram_ever = arena.peak_ram;
  if (settings.watch == 1) report_time();
  flush_log();
  if (settings.watch) settings.watch = 1;
  if (settings.break_polling) settings.break_polling = 1;
  if (settings.echo == 3) settings.echo = 0;
}

std::string file_name_of(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return std::string(slash ? slash + 1 : path).substr(0, 159);
}

void greet(run_mode mode) {
  if (mode == run_mode::interactive) show_banner();
  if (mode == run_mode::commands) write_console("\nLUMA (Lineage Utility MAchine)\n\n\r");
}

}  // namespace

int run_process(int argc, char** argv) {
  process.program_name = argc > 0 ? file_name_of(argv[0]) : "zeb";
  process.process_id = static_cast<int>(getpid());
  const run_mode mode = run_mode_of(argc, argv);
  if (mode == run_mode::parallel) {
    std::fprintf(stderr, "%s: running as \"%s\" is not available yet\n",
                 process.program_name.c_str(), argv[1]);
    return 255;
  }
  process.background = mode == run_mode::background;
  if (!process.background) start_console();
  process.start_time = process.command_start = process.stopwatch_start = wall_clock();
  set_signals();
  start_output();
  start_input(10, joined_arguments(argc, argv), argc > 1 ? process.program_name : "Standard Input");
  run_in_jump_context([] { create_arena(arena.size); });
  greet(mode);
  process.run_loop = true;
  while (process.run_loop) one_round();
  pop_all();
  run_quit_hooks();
  end_process(0);
}

}  // namespace zeb
