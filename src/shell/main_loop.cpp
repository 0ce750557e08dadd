// From the process arguments to the end of the main loop.
#include <unistd.h>

#include <cstring>

#include "shell/arena.h"
#include "shell/commands.h"
#include "shell/console.h"
#include "shell/errors.h"
#include "shell/input.h"
#include "shell/interpreter.h"
#include "shell/output.h"
#include "shell/process.h"
#include "shell/random.h"

namespace zeb {
namespace {

void report_time() {
  emit(
      text_of("%s %.2f secs.", command.command_name.c_str(), wall_clock() - process.command_start));
  if (settings.watch_ram) emit(" (", megabytes_text(static_cast<double>(arena.peak_ram)), ")");
  emit("\n");
}

void one_round() {
  process.interrupt_state = 0;
  if (settings.watch == 1) arena.peak_ram = arena_in_use();
  if (input.jump_pending) {
    input.jump_pending = false;
    if (macro_hooks.run_pending_jump) run_in_jump_context(macro_hooks.run_pending_jump);
  }
  run_one_command();
  if (arena.peak_ram > arena.peak_ram_ever) arena.peak_ram_ever = arena.peak_ram;
  if (settings.watch == 1) report_time();
  flush_log();
  if (settings.watch) settings.watch = 1;
  if (settings.break_polling) settings.break_polling = 1;
  if (settings.echo == 3) settings.echo = 0;
}

std::string joined_arguments(int argc, char** argv) {
  std::string text;
  for (int i = 1; i < argc; ++i) {
    if (i > 1) text += ' ';
    text += argv[i];
  }
  if (argc > 1) text += '\n';
  return text;
}

std::string file_name_of(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return std::string(slash ? slash + 1 : path).substr(0, 159);
}

}  // namespace

int run_process(int argc, char** argv) {
  process.program_name = argc > 0 ? file_name_of(argv[0]) : "zeb";
  process.process_id = static_cast<int>(getpid());
  process.background = argc > 1 && std::strcmp(argv[1], "bground") == 0;
  if (!process.background) start_console();
  if (argc > 1 && !process.background) std::fputs("\nLUMA (Lineage Utility MAchine)\n\n\r", stderr);
  process.start_time = wall_clock();
  start_output();
  create_arena(arena.size);
  start_input(10, joined_arguments(argc, argv), argc > 1 ? process.program_name : "Standard Input");
  process.run_loop = true;
  while (process.run_loop) one_round();
  pop_all();
  end_process(0);
}

}  // namespace zeb
