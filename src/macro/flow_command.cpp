// Counted loops: `loop` captures its body as text in the macro heap, and the reader re-reads it.
// And branches, `if`, `else`, `end`, `xend`: they skip text and don't parse it.
#include <cctype>
#include <cmath>
#include <cstring>
#include <string>

#include "base/command.h"
#include "base/errors.h"
#include "base/process.h"
#include "console/output.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/body_text.h"
#include "macro/commands.h"
#include "macro/loops.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/script_text.h"

namespace zeb {

namespace {

constexpr const char* usage = "Usage: loop (from)[+increase] (to) ... action(s)... stop\n";

std::int64_t loop_bound(const char* what) {
  double value = 0;
  if (skip_blanks_peek() == ';') error_end(usage + std::string("Loop needs two numbers"));
  value = macro_whole_value();
  if (value < 0) error_end(usage + std::string("\"") + what + "\" is a negative number");
  if (value > 2147483647) error_end(usage + std::string("\"") + what + "\" is too large");
  return static_cast<std::int64_t>(value);
}

const char* read_loop_name() {
  std::string name;
  skip_blanks_peek();
  for (int c = read_raw_char(); c > 32; c = read_raw_char()) {
    if (!std::isalnum(c) && c != '_') error_end_f("A loop name cannot contain symbol '%c'", c);
    if (name.size() < longest_loop_name) name += static_cast<char>(c);
  }
  if (name.empty()) error_end(usage + std::string("A loop name is missing"));
  char* copy = take_heap(name.size() + 1);
  std::memcpy(copy, name.c_str(), name.size() + 1);
  return copy;
}

// A loop of the calling file can't be left from here.
void require_loop() {
  if (macros.level <= macros.frames.back().loop_base)
    error_end(command.command_name, "valid only within loops");
}

}  // namespace

void loop_command() {
  require_macros();
  check_loop_depth(macros.level + 1);
  char* const heap_at_entry = macros.heap_top;
  loop_record loop{};
  loop.saved_top = heap_at_entry;
  if (accept_char('=')) loop.name = read_loop_name();
  const std::int64_t from = loop_bound("from");
  std::int64_t step = 1;
  bool written = false;
  const int sign = peek_raw_char();
  if (sign == '+' || sign == '-') {
    read_raw_char();
    written = true;
    const double value = macro_whole_value();
    if (value < 0) error_end(usage + std::string("Error reading value for increase"));
    step = static_cast<std::int64_t>(value > 2147483647 ? 2147483647 : value);
    if (sign == '-') step = -step;
  }
  const std::int64_t to = loop_bound("to");
  bool empty = false;
  if ((from > to && step > 0) || (from < to && step < 0)) {
    step = -step;
    empty = written;
  }
  loop.current = from;
  loop.step = step;
  loop.end = to;
  // The text belongs to this level while it is read: nested words count from here.
  capture_loop_text(loop);
  if (empty) {
    release_heap(heap_at_entry);
    return;
  }
  close_expansion();
  loop.resume = input.read_position;
  macros.loops[++macros.level] = loop;
  read_on_at(loop.text);
}

void endloop_command() {
  require_macros();
  require_loop();
  loop_record& loop = macros.loops[macros.level];
  loop.current = loop.end;
  skip_to_loop_end();
}

void continue_command() {
  require_macros();
  require_loop();
  skip_to_loop_end();
}

void setloop_command() {
  require_macros();
  require_loop();
  const double value = macro_whole_value();
  if (value < 0) error_end("Loops can't be set to a negative number");
  macros.loops[macros.level].current =
      static_cast<std::int64_t>(value > 2147483647 ? 2147483647 : value);
  skip_to_loop_end();
}

void if_command() {
  require_macros();
  if (!accept_char('(')) error_end("Use if( condition ) ...actions... end");
  std::string echo;
  const double value = evaluate(expression_end::parenthesis, macros.report ? &echo : nullptr);
  const bool holds = std::trunc(value) != 0;
  if (macros.report) emitf("IF %s ---> %s", echo.c_str(), holds ? "TRUE" : "FALSE!");
  if (holds) return;
  if (input.top == 0 && macros.level < 0) report_line("Condition not fullfilled");
  skip_branch();
}

void else_command() {
  require_macros();
  skip_branch();
}

void end_command() { require_macros(); }

void xend_command() { require_macros(); }

}  // namespace zeb
