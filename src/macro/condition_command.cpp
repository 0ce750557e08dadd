// `if`, `else`, `end`, `xend`: branches skip text, they don't parse it.
#include <cctype>
#include <cmath>
#include <string>
#include <string_view>

#include "base/errors.h"
#include "console/output.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/commands.h"
#include "macro/flow.h"
#include "macro/macro_reader.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"

namespace zeb {

namespace {

constexpr std::size_t longest_word = 100;

[[noreturn]] void no_end() { error_end("Found end-of-file:", "\"if\" not matched by \"end\""); }

// Next character; a block doesn't go on behind the end of its loop.
int next_in_block() {
  if (loop_text_ended()) no_end();
  return read_raw_char();
}

void refuse_end_of_file() {
  if (macros.level <= macros.frames.back().loop_base && input_ended()) no_end();
}

// Next word, ended by a blank, ";" or "(" (consumed, but for the ";" left to `ended_by`). A word
// that begins with "(" or ";" counts as "x".
std::string next_word(int* ended_by) {
  int c = 0;
  do {
    c = next_in_block();
    if (c < 33 || c == ';') refuse_end_of_file();
  } while (c < 33);
  if (c == '(' || c == ';') {
    *ended_by = c;
    return "x";
  }
  std::string word;
  for (; c > 32 && c != ';' && c != '('; c = next_in_block()) {
    if (word.size() < longest_word) word += static_cast<char>(std::tolower(c));
  }
  *ended_by = c;
  return word;
}

// "qu" up to "quote": the shortest word that the command table takes for `quote`, and longer ones.
bool is_quote(std::string_view word) {
  return word.size() >= 2 && std::string_view("quote").starts_with(word);
}

}  // namespace

void skip_block() {
  const reading_flag plain(&macro_reading::no_expansion);
  int depth = 1;
  for (;;) {
    int ended_by = 0;
    const std::string word = next_word(&ended_by);
    if (word == "if" || word == "ifnot") {
      ++depth;
    } else if (word == "else") {
      if (depth == 1) return;
    } else if (word == "end") {
      if (--depth == 0) return;
    } else if (word == "xend") {
      return;
    } else if (is_quote(word) && ended_by != ';') {
      while (next_in_block() != ';') {
      }
      refuse_end_of_file();
    }
  }
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
  skip_block();
}

void else_command() {
  require_macros();
  skip_block();
}

void end_command() { require_macros(); }

void xend_command() { require_macros(); }

}  // namespace zeb
