// Commands that deal with the world around the program.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "base/command.h"
#include "base/errors.h"
#include "base/message_text.h"
#include "base/open_files.h"
#include "base/process.h"
#include "base/safe_mode.h"
#include "console/console.h"
#include "console/output.h"
#include "console/screen.h"
#include "console/settings.h"
#include "language/commands/commands.h"
#include "language/help.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/main_loop.h"
#include "language/methods.h"
#include "language/options.h"

namespace zeb {
namespace {

constexpr int smallest_screen[2] = {4, 20};  // rows, columns
constexpr int largest_screen[2] = {10000, 10000};

void show_current_directory() {
  std::error_code failure;
  const std::string path = std::filesystem::current_path(failure).string();
  if (failure) error_end("Can't tell the current directory:", failure.message());
  emitf("Current directory is %s", path.c_str());
}

}  // namespace

void system_command() {
  skip_blanks_peek();
  std::string text = read_to_semicolon();
  while (!text.empty() && static_cast<unsigned char>(text.back()) < 33) text.pop_back();
  if (text.empty()) error_end("Must give a command for the shell");
  const int status = run_system_command(text);
  if (status != 0 && settings.report) {
    report_line("Shell command ended with status", status >= 256 ? status / 256 : status);
  }
}

void cdir_command() {
  no_timing();
  if (read_file_name() > 0) {
    const std::string path(token());
    expect_end();
    if (const std::string why = refusal_of_reading(path); !why.empty()) {
      error_end("Can't change to directory", path + cause_text(why));
    }
    if (chdir(path.c_str()) != 0) {
      error_end(text_of("Can't change to directory %s (%s)", path.c_str(), std::strerror(errno)));
    }
  }
  show_current_directory();
}

void rdir_command() {
  no_timing();
  if (read_file_name() == 0) error_end("No run-path given");
  const std::string path(token());
  expect_end();
  set_run_directory(path);
  if (settings.report) report_line("Run-path is", input.run_directory);
}

void screen_command() {
  no_timing();
  int size[2] = {screen.rows, screen.columns};
  for (int i = 0; i < 2 && skip_blanks_peek() != ';'; ++i) {
    if (!read_optional_int(&size[i]) || size[i] < smallest_screen[i] ||
        size[i] > largest_screen[i]) {
      error_end("Screen size is given as rows (at least 4) and columns (at least 20)");
    }
    cut_lines_at_edge();  // a query leaves the lines of a pipe whole
  }
  expect_end();
  resize_screen(size[0], size[1]);
  emitf("Screen has %i rows and %i columns", size[0], size[1]);
}

void thanks_command() {
  no_timing();
  expect_end();
  emit("ZEB stands on the work of those who found and published its methods: optimisation of\n");
  emit("characters on trees, branch swapping, the ratchet, drifting, sectorial searches, tree\n");
  emit("fusing, implied weighting, consensus and support; the papers are named where each of\n");
  emit("them is used. It is built with the GNU and LLVM compilers, ncurses, GoogleTest and\n");
  emit("Google Benchmark. Thanks to all who wrote them, and to all who report what goes wrong.\n");
}

void vversion_command() {
  no_timing();
  constexpr std::string_view words[] = {"methods"};
  const bool methods = read_word() > 0;
  if (methods && find_keyword(token(), words) != 0) {
    error_end("Wrong argument for vversion:", token());
  }
  expect_end();
  methods ? write_methods() : show_banner();
}

void quit_command() {
  if (!take_up_execute_file()) leave_program();
}

// The word of the process arguments that takes the program into the background.
void bground_command() {
  no_timing();
  if (process.slave) return;
  if (token() != command.command_name) {
    if (command.is_argument) {
      error_end("Unrecognized command:", token(), " --did you mean \"bground\"?");
    }
    error_end("Unrecognized command:", token());
  }
  if (!command.is_argument) {
    error_end(text_of("Command \"%s\" is command-line only!", command.command_name.c_str()));
  }
  end_console();
  go_to_background();
  settle_for_background();
  open_places(no_log | no_text_buffer);
  close_places(no_console);
}

}  // namespace zeb
