#include "macro/variable_expansion.h"
#include "macro/variables.h"

#include <cctype>
#include <cmath>
#include <string>

#include "base/errors.h"
#include "base/message_text.h"
#include "language/lexer.h"
#include "macro/macro_values.h"
#include "macro/script_text.h"
#include "macro/variable_reference.h"

namespace zeb {

namespace {

// Beyond this the rest of a range is left to a further expansion.
constexpr std::size_t longest_range_text = 8350;

// What stands between "/" and the variable: sign, width, decimals.
struct local_format {
  bool given = false;
  bool sign = false;
  int width = 1;
  int decimals = -1;
};

int read_small_number() {
  int value = 0;
  int c = read_raw_char();
  for (; std::isdigit(c); c = read_raw_char()) value = value < 300 ? value * 10 + (c - '0') : value;
  unread_raw_char();
  return value > 300 ? 300 : value;
}

local_format read_local_format() {
  local_format format;
  if (peek_raw_char() != '/') return format;
  read_raw_char();
  format.given = true;
  if (peek_raw_char() == '+') {
    read_raw_char();
    format.sign = true;
  }
  bool left = false;
  if (peek_raw_char() == '-') {
    read_raw_char();
    left = true;
  }
  if (std::isdigit(peek_raw_char())) format.width = read_small_number();
  if (left) format.width = -format.width;
  if (peek_raw_char() == '.') {
    read_raw_char();
    format.decimals = read_small_number();
  }
  const int next = skip_blanks_peek();
  if (!std::isalpha(next) && next != '(') error_end("Incorrect variable conversion");
  return format;
}

std::string formatted(double value, const local_format& format) {
  if (!format.given)
    return macro_reading_flags.exact_numbers ? all_digits(value) : value_text(value);
  const int width = format.width;
  if (format.decimals >= 0) {
    return format.sign ? text_of("%+*.*f", width, format.decimals, value)
                       : text_of("%*.*f", width, format.decimals, value);
  }
  const double whole = std::trunc(value);
  return format.sign ? text_of("%+*.0f", width, whole) : text_of("%*.0f", width, whole);
}

// The cells of a range from `cell` on, as the text of an expansion.
std::string rest_of_range(const variable_reference& reference, int cell) {
  const std::string_view name = variable_name(reference.base);
  std::string rest = "'";
  rest += reference.named ? std::string(name) : std::to_string(reference.base - var_shift());
  rest += "[ ";
  const auto last = static_cast<std::size_t>(reference.subscripts) - 1;
  for (std::size_t d = 0; d < last; ++d) rest += std::to_string(reference.subscript[d]) + " ";
  const int from = reference.subscript[last] + (cell - reference.cell);
  const int to = reference.subscript[last] + (reference.last - reference.cell);
  rest += text_of(" %i-%i ", from, to);
  if (reference.separator != ' ')
    rest += text_of("&%i ", static_cast<unsigned char>(reference.separator));
  return rest + "]'";
}

// All cells of a range; what doesn't fit becomes an expansion of its own at the end, `tail` bytes
// long, which is read next.
std::string range_text(const variable_reference& reference, std::size_t* tail) {
  std::string text;
  for (int cell = reference.cell; cell <= reference.last; ++cell) {
    if (cell > reference.cell) text += reference.separator;
    if (text.size() > longest_range_text) {
      const std::string rest = rest_of_range(reference, cell);
      *tail = rest.size();
      return text + rest;
    }
    text += formatted(variable_value(cell), {});
  }
  return text;
}

}  // namespace

void expand_variable(char quote) {
  const nesting_guard guard;
  const local_format format = read_local_format();
  const variable_reference reference = read_variable_reference(true);
  int c = read_raw_char();
  while (c < 33) c = read_raw_char();
  if (c != quote) {
    error_end(reference.subscripts ? "Expression must end and start with the same symbol"
                                   : "Each quote or single quote must be matched");
  }
  if (!reference.range) {
    insert_text(formatted(variable_value(reference.cell), format));
    return;
  }
  if (format.given) error_end("Sorry, local formatting of arrays not allowed");
  std::size_t tail = 0;
  const std::string text = range_text(reference, &tail);
  insert_text(text, tail);
}

}  // namespace zeb
