// Counted loops: `loop` captures its body as text in the macro heap, and the reader re-reads it.
// And branches, `if`, `else`, `end`, `xend`: they skip text and don't parse it.
#include <cctype>
#include <cmath>
#include <string>
#include <utility>

#include "base/command.h"
#include "base/errors.h"
#include "base/process.h"
#include "console/output.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/bodies.h"
#include "macro/body_text.h"
#include "macro/commands.h"
#include "macro/hooks.h"
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

std::string read_loop_name() {
  std::string name;
  skip_blanks_peek();
  for (int c = read_raw_char(); c > 32; c = read_raw_char()) {
    if (!std::isalnum(c) && c != '_') error_end_f("A loop name cannot contain symbol '%c'", c);
    if (name.size() < longest_loop_name) name += static_cast<char>(c);
  }
  if (name.empty()) error_end(usage + std::string("A loop name is missing"));
  return name;
}

}  // namespace

void loop_command() {
  require_macros();
  check_loop_depth(0);
  std::string name;
  if (accept_char('=')) name = read_loop_name();
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
  body_record loop = capture_body(body_kind::loop, name);
  const bool forbidden =
      open_bodies() == 0 && hooks_of_macro.no_more_loops && hooks_of_macro.no_more_loops();
  if (empty || forbidden) return release_heap(loop.saved_top);
  loop.current = from;
  loop.step = step;
  loop.end = to;
  enter_body(std::move(loop));
}

void endloop_command() {
  require_macros();
  body_record& loop = reach_body(body_kind::loop, "loops");
  loop.current = loop.end;
  skip_to_body_end();
}

void continue_command() {
  require_macros();
  innermost_body();
  skip_to_body_end();
}

void setloop_command() {
  require_macros();
  innermost_body();
  const double value = macro_whole_value();
  if (value < 0) error_end("Loops can't be set to a negative number");
  reach_body(body_kind::loop, "loops").current =
      static_cast<std::int64_t>(value > 2147483647 ? 2147483647 : value);
  skip_to_body_end();
}

void if_command() {
  require_macros();
  if (!accept_char('(')) error_end("Use if( condition ) ...actions... end");
  std::string echo;
  const double value = evaluate(expression_end::parenthesis, macros.report ? &echo : nullptr);
  const bool holds = std::trunc(value) != 0;
  if (macros.report) emitf("IF %s ---> %s", echo.c_str(), holds ? "TRUE" : "FALSE!");
  if (holds) return;
  if (input.top == 0 && open_bodies() == 0) report_line("Condition not fullfilled");
  skip_branch(branch::after_if);
}

void else_command() {
  require_macros();
  skip_branch(branch::after_else);
}

void end_command() { require_macros(); }

void xend_command() { require_macros(); }

}  // namespace zeb
