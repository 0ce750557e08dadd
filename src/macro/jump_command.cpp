// `goto`, `label`, `return`, `recurse`, `errmsg`: moving about in run files.
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/process.h"
#include "console/output.h"
#include "language/commands/commands.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/commands.h"
#include "macro/jumps.h"
#include "macro/loop_levels.h"
#include "macro/macro_reader.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"

namespace zeb {

namespace {

constexpr std::size_t longest_label = 124;
constexpr std::size_t longest_argument = 512;
constexpr std::size_t argument_pool = 2048;
constexpr std::size_t most_arguments = 32;

std::string lowered(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

void check_label(const std::string& label) {
  if (label.size() > longest_label) error_end("Label is too long");
}

void set_default_target() {
  if (read_item() == 0) error_end("Define default target file: Must give filename");
  input.goto_default_file = std::string(token()).substr(0, 160);
  if (settings.report) report_line("Default target for goto is", input.goto_default_file);
}

void set_error_target() {
  if (input.error_target_level >= 0)
    error_end("A target has been defined; undefine first, with 'goto ]'");
  if (read_item() == 0) error_end("Define target file for error/break: Must give filename");
  const std::string file(token());
  if (read_item() == 0) error_end("Must give label to go to");
  const std::string label(token());
  check_label(label);
  input.error_target_file = file;
  input.error_target_label = label;
  input.error_target_level = input.top;
  if (settings.report)
    emitf("Target for goto on error/break: %s (label: %s)", file.c_str(), label.c_str());
}

// Next word of a file in a label search, lower case; false at the end of the file. Quoted text is
// passed over.
bool next_search_word(int depth, std::string* word) {
  word->clear();
  for (;;) {
    if (input.top < depth || (input_ended() && skip_blanks_peek() == ';')) return false;
    const int c = read_raw_char();
    if (c > 32 && c != ';') {
      *word += static_cast<char>(std::tolower(c));
      break;
    }
  }
  for (;;) {
    const int c = peek_raw_char();
    if (c < 33 || c == ';' || word->size() > 2000) break;
    *word += static_cast<char>(std::tolower(read_raw_char()));
  }
  if (word->size() >= 2 && std::string_view("quote").starts_with(*word)) {
    while (peek_raw_char() != ';' && !(input.top < depth)) read_raw_char();
  }
  return true;
}

bool find_label(const std::string& label) {
  const reading_flag plain(&macro_reading::no_expansion);
  const int depth = input.top;
  const std::string sought = lowered(label);
  std::string word;
  while (next_search_word(depth, &word)) {
    if (word != "label") continue;
    if (!next_search_word(depth, &word)) return false;
    if (word == sought) return true;
  }
  return false;
}

std::string joined_arguments(const std::vector<std::string>& arguments) {
  std::string text;
  for (const std::string& argument : arguments) text += (text.empty() ? "" : " ") + argument;
  return text;
}

}  // namespace

std::vector<std::string> read_file_arguments(const std::string& file) {
  std::vector<std::string> arguments;
  std::size_t total = 0;
  while (read_item() > 0) {
    std::string argument(token());
    if (argument.size() > longest_argument) error_end("Argument too long");
    total += argument.size() + 1;
    if (total > argument_pool) error_end("String of arguments too long");
    if (arguments.size() == most_arguments) {
      error_end_f("Too many arguments for %s (max.: %i)", file.c_str(),
                  static_cast<int>(most_arguments));
    }
    arguments.push_back(std::move(argument));
  }
  return arguments;
}

void jump_to_label(const std::string& file, const std::string& label,
                   const std::vector<std::string>& arguments) {
  check_label(label);
  if (input.top > 0 && is_current_file(file) && top_frame().stream) {
    close_expansion();
    leave_loops_above(macros.frames.back().loop_base);
    rewind_top_frame();
    if (!arguments.empty()) top_frame().arguments = arguments;
  } else {
    push_file(file, arguments);
  }
  if (!find_label(label)) error_end_f("Label \"%s\" not found in %s", label.c_str(), file.c_str());
  if (settings.report) {
    emitf("Goto Label \"%s\" in %s%s", label.c_str(), file.c_str(),
          arguments.empty() ? " (no args.)"
                            : (" (args: " + joined_arguments(arguments) + ")").c_str());
  }
}

void run_error_target() { jump_to_label(input.error_target_file, input.error_target_label, {}); }

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
      input.goto_default_file.clear();
      return;
    case '[':
      next_nonblank();
      set_error_target();
      return;
    case ']':
      next_nonblank();
      input.error_target_level = -1;
      if (settings.report) report_line("Undefined error/break target");
      return;
    default:
      break;
  }
  if (read_item() == 0) error_end("Must give label to go to");
  std::string file(token());
  std::string label;
  if (skip_blanks_peek() == ';') {
    // One word: a label of the default target, or of the file being read.
    label = file;
    file = input.goto_default_file;
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
}

void return_command() {
  require_macros();
  no_timing();
  if (accept_char('=')) macros.frames.back().keep_names = true;
  double status = 0;
  if (skip_blanks_peek() != ';') {
    status = macro_value();
    macros.exit_status =
        status > 2147483647.0 || status < -2147483648.0 ? 0 : static_cast<int>(status);
    if (settings.report) emitf("Exit status = %i", macros.exit_status);
  }
  accept_char(';');
  close_expansion();
  pop_frame();
}

void recurse_command() {
  require_macros();
  no_timing();
  if (input.top == 0 || !top_frame().stream) error_end("Only run files can be recursed");
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
