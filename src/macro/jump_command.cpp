// `goto`, `label`, `return`, `recurse`, `errmsg`: moving about in run files.
#include <cstring>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/process.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/commands/commands.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/commands.h"
#include "macro/hooks.h"
#include "macro/jumps.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/script_text.h"

namespace zeb {

namespace {

void set_default_target() {
  if (read_file_name() == 0) error_end("Define default target file: Must give filename");
  const std::string file(token());
  check_end();
  macros.goto_default_file = file.substr(0, 160);
  if (settings.report) report_line("Default target for goto is", macros.goto_default_file);
}

void read_error_target() {
  if (input.error_target_level >= 0)
    error_end("A target has been defined; undefine first, with 'goto ]'");
  if (read_file_name() == 0) error_end("Define target file for error/break: Must give filename");
  const std::string file(token());
  if (read_item() == 0) error_end("Must give label to go to");
  const std::string label(token());
  check_end();
  check_label(label);
  set_error_target(file, label);
  if (settings.report)
    emitf("Target for goto on error/break: %s (label: %s)", file.c_str(), label.c_str());
}

}  // namespace

void goto_command() {
  require_macros();
  no_timing();
  const int c = skip_blanks_peek();
  switch (c) {
    case '=':
      next_nonblank();
      set_default_target();
      return;
    case '-':
      next_nonblank();
      check_end();
      macros.goto_default_file.clear();
      return;
    case '[':
      next_nonblank();
      read_error_target();
      return;
    case ']':
      next_nonblank();
      check_end();
      clear_error_target();
      if (settings.report) report_line("Undefined error/break target");
      return;
    default:
      break;
  }
  if (read_file_name() == 0) error_end("Must give label to go to");
  std::string file(token());
  std::string label;
  if (skip_blanks_peek() == ';') {
    // One word: a label of the default target, or of the file being read.
    label = file;
    file = macros.goto_default_file;
    if (file.empty() && input.top > 0) file = top_frame().name;
    if (file.empty()) error_end("Must give filename (or define default target file)");
  } else {
    read_item();
    label = token();
  }
  const std::vector<std::string> arguments = read_file_arguments(file);
  jump_to_label(file, label, arguments);
}

void label_command() {
  require_macros();
  no_timing();
  read_item();
  check_end();
}

void return_command() {
  require_macros();
  no_timing();
  if (process.slave && input.top == 0) return hooks_of_macro.return_of_task();
  if (accept_char('=')) macros.frames.back().keep_names = true;
  double status = 0;
  if (skip_blanks_peek() != ';') {
    status = macro_whole_value();
    const bool fits = status <= 2147483647.0 && status >= -2147483648.0;
    set_exit_status(fits ? static_cast<int>(status) : 0);
    if (settings.report) emitf("Exit status = %i", macros.exit_status);
  }
  accept_char(';');
  close_expansion();
  pop_frame();
}

void recurse_command() {
  require_macros();
  no_timing();
  if (input.top == 0 || !top_frame().file.is_open()) error_end("Only run files can be recursed");
  const std::string file = top_frame().name;
  const std::vector<std::string> arguments = read_file_arguments(file);
  accept_char(';');
  push_file(file, arguments, true);
}

void errmsg_command() {
  require_macros();
  error_end(read_quoted_text());
}

}  // namespace zeb
