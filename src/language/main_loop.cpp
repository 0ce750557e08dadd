#include "language/main_loop.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "base/arena.h"
#include "base/command.h"
#include "base/process.h"
#include "console/console.h"
#include "language/help.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/run_mode.h"

namespace zeb {
namespace {

std::string file_name_of(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return std::string(slash ? slash + 1 : path).substr(0, 159);
}

void greet(run_mode mode) {
  if (mode == run_mode::interactive) show_banner();
  if (mode == run_mode::commands) write_console("\nLUMA (Lineage Utility MAchine)\n\n\r");
}

}  // namespace

void leave_program() {
  run_quit_hooks();
  end_process(0);
}

int run_process(int argc, char** argv) {
  const std::string program_name = argc > 0 ? file_name_of(argv[0]) : "zeb";
  const run_mode mode = run_mode_of(argc, argv);
  if (mode == run_mode::parallel) {
    std::fprintf(stderr, "%s: running as \"%s\" is not available yet\n", program_name.c_str(),
                 argv[1]);
    return 255;
  }
  if (mode == run_mode::background) go_to_background();
  if (!process.background) start_console();
  start_command_clock();
  start_stopwatch();
  set_signals();
  start_input(10, joined_arguments(argc, argv), argc > 1 ? program_name : "Standard Input");
  run_in_jump_context([] { create_arena(arena.size); });
  greet(mode);
  while (interpreter.running) run_one_round();
  pop_all();
  leave_program();
}

}  // namespace zeb
