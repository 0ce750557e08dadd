#include "language/command_strings.h"

#include <cstring>

#include "base/arena.h"
#include "base/command.h"
#include "base/errors.h"
#include "base/interrupts.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/name_matching.h"

namespace zeb {
namespace {

constexpr int most_nested = 100;  // each takes a part of the process's own stack

struct nesting {
  int depth = 0;
};
nesting strings;

// Puts the state of the calling command back, also where an error passes through.
class nested_run {
 public:
  nested_run() { ++strings.depth; }
  ~nested_run() { --strings.depth; }
  nested_run(const nested_run&) = delete;
  nested_run& operator=(const nested_run&) = delete;

 private:
  arena_marks_scope memory_;
  timeout_scope time_limit_;
  command_scope command_;
};

void check_room() {
  if (input.top >= input.mxproc || strings.depth >= most_nested) {
    error_end_f(
        "Can't run this command with %i open files\nYou may increase \"mxproc\" and try again",
        input.mxproc);
  }
}

// False where the string has ended.
bool reach_command(int level) {
  while (has_text_at(level)) {
    const int c = read_char();
    if (c < 33 || c == ';') continue;
    if (c == '/' && peek_char() == '*') {
      read_char();
      skip_rest_of_comment();
      continue;
    }
    unread_char();
    return true;
  }
  return false;
}

// The first row that the word begins; with approximate matching of options, the row that the user
// means.
const command_row& row_of_word() {
  const command_row* row = find_command(token());
  for (int i = 0; !row && matching.match_mode == 1 && i < zzz_row(); ++i) {
    const command_row& candidate = command_table()[static_cast<std::size_t>(i)];
    if (ask_match(token(), candidate.name, "command")) row = &candidate;
  }
  if (row) return *row;
  error_end("Unknown command:", token());
}

int loop_level() {
  const auto level = hooks_of_language.macros.loop_level;
  return level ? level() : 0;
}

// False where a "continue" of the calling loop ends the string.
bool run_next(int level_at_entry, const command_check& check) {
  if (read_word() == 0) {
    error_end_f("Found '%c' when expecting a command", skip_blanks_peek());
  }
  const command_row& row = row_of_word();
  if (std::strcmp(row.name, "continue") == 0 && loop_level() == level_at_entry) return false;
  if (check && !check(row)) {
    skip_to(';');
    return true;
  }
  rename_command(row.name);
  call_handler(row);
  return true;
}

void run_frame(const command_check& check) {
  const silence_scope silent;
  const int level = input.top;
  const int loops = loop_level();
  while (reach_command(level) && run_next(loops, check)) {
    release_command_memory();
    check_interrupt();
    if (interrupts.reason == stop_reason::time) forget_interrupt();
    if (!interrupted()) continue;
    if (hooks_of_language.macros.command_failed) hooks_of_language.macros.command_failed();
    break;
  }
  while (input.top >= level) pop_frame();
}

}  // namespace

int command_string_depth() { return strings.depth; }

void check_command_string(const std::string& text) {
  if (text.size() < frame_text_size) return;
  error_end_f("Sorry, instructions are too long (%i bytes; max. is %i)",
              static_cast<int>(text.size()), frame_text_size);
}

void run_command_string(const std::string& text, const command_check& check) {
  check_room();
  check_command_string(text);
  const nested_run nested;
  push_string(text, "search commands");
  // A wish that came just before is one to stop this, too.
  if (interrupts.reason == stop_reason::time) forget_interrupt();
  run_frame(check);
}

void run_search_string(const std::string& text, const command_check& check) {
  run_command_string(text, check);
  if (interrupted() || !time_is_out()) return;
  emit(end_of_time_text());
  stop_search(stop_reason::user);
}

}  // namespace zeb
