#include "macro/macro_reader.h"

#include <cctype>
#include <string>

#include "base/errors.h"
#include "language/input.h"
#include "macro/bodies.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/script_text.h"
#include "macro/string_conversion.h"
#include "macro/variable_expansion.h"

namespace zeb {

namespace {

bool starts_reference(int c) { return std::isalnum(c) || c == '('; }

// `#N` and `#name`: the counter of a loop. Returns false, with the text untouched but for what was
// put back, where there is no such loop.
bool expand_loop_counter() {
  const int next = read_raw_char();
  unread_raw_char();
  if (!std::isalnum(next) && next != '(') {
    error_end("When macros are allowed, \"#\" must be followed by number/name of loop");
  }
  if (std::isdigit(next) || next == '(') {
    const int number = [&] {
      if (next == '(') {
        const double value = macro_whole_value();
        return value >= 0 && value < 10000 ? static_cast<int>(value) : -1;
      }
      int value = 0;
      int c = read_raw_char();
      for (; std::isdigit(c); c = read_raw_char())
        value = value < 10000 ? value * 10 + (c - '0') : value;
      unread_raw_char();
      return value;
    }();
    const std::int64_t* counter = number < 1 ? nullptr : loop_counter(number);
    insert_text(counter ? std::to_string(*counter) : "#" + std::to_string(number));
    return counter != nullptr;
  }
  std::string name;
  int c = read_raw_char();
  for (; std::isalnum(c) || c == '_'; c = read_raw_char()) {
    if (name.size() < longest_loop_name) name += static_cast<char>(c);
  }
  unread_raw_char();
  const std::int64_t* counter = loop_counter(name);
  insert_text(counter ? std::to_string(*counter) : "#" + name);
  return counter != nullptr;
}

// `%N` and `%(expression)`: an argument of the run file.
void expand_argument() {
  const int next = read_raw_char();
  double number = 0;
  if (next == '(') {
    unread_raw_char();
    number = macro_whole_value();
  } else {
    number = next - '0';
  }
  const input_frame& frame = *input.frames[static_cast<std::size_t>(input.top)];
  const auto count = static_cast<double>(frame.arguments.size());
  if (number >= 1 && number <= count) {
    insert_text(frame.arguments[static_cast<std::size_t>(number) - 1]);
  } else {
    insert_text(" ");
  }
}

}  // namespace

int macro_read_char() {
  for (;;) {
    const int c = read_raw_char();
    // Everything that can start an expansion lies in this range; letters and digits leave at once.
    if (c > '\'' || c < '"' || macro_reading_flags.no_expansion) return c;
    if (last_char_was_plain()) return c;
    if (macro_reading_flags.single_quotes_only && c != '\'' && c != '%') return c;
    switch (c) {
      case '\'':
      case '"': {
        // After a command's word a quote may open a title: the handler decides.
        if (macro_reading_flags.no_quotes || input.in_command_head) return c;
        const int next = peek_raw_char();
        if (!starts_reference(next) && next != '/') return c;
        expand_variable(static_cast<char>(c));
        continue;
      }
      case '$': {
        if (macro_reading_flags.no_strings || input.in_command_head) return c;
        if (!starts_reference(peek_raw_char())) return c;
        convert_string();
        continue;
      }
      case '%': {
        const int next = peek_raw_char();
        if (!std::isdigit(next) && next != '(') return c;
        expand_argument();
        continue;
      }
      case '#':
        if (macro_reading_flags.no_quotes && !std::isalnum(peek_raw_char())) return c;
        if (!expand_loop_counter()) {
          // No such loop: the text stands as it was written, its "#" plain.
          return read_raw_char();
        }
        continue;
      default:
        return c;
    }
  }
}

}  // namespace zeb
