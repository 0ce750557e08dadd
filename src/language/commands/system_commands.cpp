// Commands that deal with the world around the program.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/console.h"
#include "console/output.h"
#include "language/commands/commands.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"

namespace zeb {
namespace {

constexpr int smallest_screen[2] = {4, 20};  // rows, columns
constexpr int largest_screen[2] = {10000, 10000};

void show_current_directory() {
  std::error_code failure;
  const std::string path = std::filesystem::current_path(failure).string();
  emitf("Current directory is %s", path.c_str());
}

}  // namespace

void system_command() {
  std::string text;
  skip_blanks_peek();
  for (int c = read_char(); c != ';'; c = read_char()) text += static_cast<char>(c);
  while (!text.empty() && static_cast<unsigned char>(text.back()) < 33) text.pop_back();
  if (text.empty()) error_end("Must give a command for the shell");
  const int status = run_system_command(text);
  if (status != 0 && settings.report) {
    report_line("Shell command ended with status", status >= 256 ? status / 256 : status);
  }
}

void cdir_command() {
  no_timing();
  if (read_item() > 0) {
    const std::string path(token());
    expect_end();
    if (chdir(path.c_str()) != 0) {
      error_end(text_of("Can't change to directory %s (%s)", path.c_str(), std::strerror(errno)));
    }
  }
  show_current_directory();
}

void rdir_command() {
  no_timing();
  if (read_item() == 0) error_end("No run-path given");
  const std::string path(token());
  expect_end();
  input.run_directory = path;
  if (!input.run_directory.ends_with('/')) input.run_directory += '/';
  if (settings.report) report_line("Run-path is", input.run_directory);
}

void screen_command() {
  no_timing();
  int size[2] = {output.screen_rows, output.screen_columns};
  for (int i = 0; i < 2 && skip_blanks_peek() != ';'; ++i) {
    if (!read_optional_int(&size[i]) || size[i] < smallest_screen[i] ||
        size[i] > largest_screen[i]) {
      error_end("Screen size is given as rows (at least 4) and columns (at least 20)");
    }
    output.cut_lines = true;  // a query leaves the lines of a pipe whole
  }
  expect_end();
  output.screen_rows = size[0];
  output.screen_columns = size[1];
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
  expect_end();
  show_banner();
}

void show_banner() {
  emit("ZEB version " ZEB_VERSION ", phylogenetic analysis under parsimony\n");
  emit("LUMA (Lineage Utility MAchine)\n");
  emit("Enter \"help\" for the commands, \"thanks\" for acknowledgments, \"quit\" to leave.\n");
}

// The word of the process arguments that takes the program into the background.
void bground_command() {
  no_timing();
  if (token() != command.command_name) {
    if (command.is_argument) {
      error_end("Unrecognized command:", token(), " --did you mean \"bground\"?");
    }
    error_end("Unrecognized command:", token());
  }
  if (!command.is_argument) {
    error_end(text_of("Command \"%s\" is command-line only!", command.command_name.c_str()));
  }
  if (command.command_name != "bground") error_end("Running as a slave is not available yet");
  end_console();
  process.background = true;
  settings.report = false;
  settings.break_polling = 0;
  settings.beep = false;
  output.output_mask = no_console;
}

}  // namespace zeb
