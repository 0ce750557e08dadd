// `set`: assignment, strings, and the forms that work on whole arrays (see array_operations.h).
#include <cctype>
#include <cmath>
#include <cstring>
#include <string>

#include "base/errors.h"
#include "console/output.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/array_operations.h"
#include "macro/assignment.h"
#include "macro/commands.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/script_text.h"
#include "macro/variable_reference.h"
#include "macro/variables.h"

namespace zeb {

namespace {

// The text of `set x $...;`, up to ";" (consumed): blank runs shrink to one blank, "&N" is the
// character of code N,
// ".," a semicolon. Variables in single or double quotes stay as they are written, to be expanded
// when the string is used.
std::string read_stored_text() {
  const reading_flag quotes(&macro_reading::no_quotes);
  // A "$" at the head opened the text; further ones convert as usual.
  const reading_flag strings(&macro_reading::no_strings, false);
  const comma_reading commas(true);

  std::string text;
  bool blank = false;
  const std::size_t room = static_cast<std::size_t>(macros.max_variables) * 8;
  for (;;) {
    int c = read_char();
    if (c == ';') break;
    if (c < 33) {
      if (!blank) text += ' ';
      blank = true;
      if (input_ended() && input.top == 0) break;
      continue;
    }
    blank = false;
    if (c == '.' && peek_raw_char() == ',') {
      read_raw_char();
      c = ';';
    } else if (c == '&' && std::isdigit(peek_raw_char())) {
      int code = 0;
      while (std::isdigit(peek_raw_char()))
        code = code < 1000 ? code * 10 + (read_raw_char() - '0') : read_raw_char();
      c = code & 255;
    }
    if (text.size() < room) text += static_cast<char>(c);
  }
  return text;
}

void store_string(const variable_reference& target) {
  const int cell = section_start(target);
  if (target.is_section()) {
    if (section_sizes(target).size() > 1 && macros.protection == 2) {
      error_end("Cannot re-set array under protection mode 2\nVar.", target.base,
                variable_name(target.base), "has", target.dimensions, "dimensions, not",
                target.subscripts);
    }
  }
  const reading_flag as_shown(&macro_reading::exact_numbers, false);
  const std::string text = read_stored_text();
  const std::span<char> bytes = string_bytes(cell);
  if (text.size() + 1 > bytes.size())
    error_end("String too long (it exceeds variable", macros.max_variables - 1, ")");
  std::memcpy(bytes.data(), text.c_str(), text.size() + 1);
  const int cell_size = variable_cell_size();
  const int cells = (static_cast<int>(text.size()) + cell_size) / cell_size;
  if (macros.report)
    emitf("Copied string into user vars. %i-%i (%i cells)", cell, cell + cells - 1, cells);
}

enum class assignment_operator { plain, add, subtract, multiply, divide, bit_and, bit_or, bit_xor };

double combined(assignment_operator op, double old, double value) {
  switch (op) {
    case assignment_operator::plain:
      return value;
    case assignment_operator::add:
      return old + value;
    case assignment_operator::subtract:
      return old - value;
    case assignment_operator::multiply:
      return old * value;
    case assignment_operator::divide: {
      if (!macros.integer_only) return old / value;
      // Integer cells divide as unsigned numbers; a zero divisor leaves what a double division
      // would store.
      const auto divisor = static_cast<std::uint32_t>(value_bits(value));
      if (divisor == 0) return old / 0.0;
      return static_cast<std::int32_t>(static_cast<std::uint32_t>(value_bits(old)) / divisor);
    }
    case assignment_operator::bit_and:
      return value_bits(old) & value_bits(value);
    case assignment_operator::bit_or:
      return value_bits(old) | value_bits(value);
    case assignment_operator::bit_xor:
      return value_bits(old) ^ value_bits(value);
  }
  return value;
}

void check_not_index_cell(const variable_reference& target) {
  if (macros.protection == 2 && target.is_section()) {
    error_end("Cannot re-set array under protection mode 2\nVar.", target.base,
              variable_name(target.base), "has", target.dimensions, "dimensions, not",
              target.subscripts);
  }
}

void assign(const variable_reference& target, assignment_operator op) {
  std::string echo;
  double value = 0;
  {
    const running_assignment running(target);
    value = evaluate(expression_end::semicolon, macros.report ? &echo : nullptr);
  }
  check_end();
  if (assignment.list_written) return;
  check_not_index_cell(target);
  store_variable(target.cell, combined(op, variable_value(target.cell), value));
  if (macros.report) {
    report_line("Var.", target.cell, std::string(variable_name(target.base)), "=", echo, "--->",
                value_text(variable_value(target.cell)));
  }
}

// The operator after the reference. Returns false where the assignment is already done.
bool read_operator(const variable_reference& target, assignment_operator* op) {
  *op = assignment_operator::plain;
  const int c = skip_blanks_peek();
  auto compound = [&](assignment_operator kind) {
    next_nonblank();
    if (peek_raw_char() != '=') error_end("Invalid syntax in set command");
    read_raw_char();
    *op = kind;
    return true;
  };
  auto step = [&](double by) {
    next_nonblank();
    const int next = peek_raw_char();
    if (next == c) {
      read_raw_char();
      check_end();
      check_not_index_cell(target);
      store_variable(target.cell, variable_value(target.cell) + by);
      return false;
    }
    if (c == '+' && next != '=') error_end("Invalid syntax in set command");
    if (next == ';') error_end("Set requires a value or expression");
    // After "-", one character is taken whatever it is: "- 3" and "-=3" subtract 3, "-35"
    // subtracts 5, and "-3" leaves nothing to subtract.
    read_char();
    *op = c == '+' ? assignment_operator::add : assignment_operator::subtract;
    return c == '+' || next == '=' || skip_blanks_peek() != ';';
  };
  switch (c) {
    case ';':
      error_end("Set requires a value or expression");
    case '+':
      return step(1);
    case '-':
      return step(-1);
    case '*':
      return compound(assignment_operator::multiply);
    case '/':
      return compound(assignment_operator::divide);
    case '&':
      return compound(assignment_operator::bit_and);
    case '|':
      return compound(assignment_operator::bit_or);
    case '^':
      return compound(assignment_operator::bit_xor);
    case '=':
      next_nonblank();
      return true;
    default:
      return true;
  }
}

}  // namespace

void set_command() {
  require_macros();
  no_timing();
  const int c = skip_blanks_peek();
  switch (c) {
    case '+':
    case '-':
      next_nonblank();
      check_end();
      macros.blank_after_strings = c == '+';
      report_line(c == '+' ? "Adding space in string conversions"
                           : "Not adding space in string conversions");
      return;
    case '*':
      next_nonblank();
      operate_on_arrays();
      return;
    case '!':
      next_nonblank();
      sort_array();
      return;
    case ':':
      next_nonblank();
      scale_distances();
      return;
    case ')':
      next_nonblank();
      rotate_points();
      return;
    case ';':
      error_end("Set requires a value or expression");
    default:
      break;
  }
  variable_reference target;
  {
    const reading_flag strings(&macro_reading::no_strings);
    const reading_flag exact(&macro_reading::exact_numbers);
    target = read_variable_reference(false);
    if (skip_blanks_peek() == '$') {
      next_nonblank();
      store_string(target);
      return;
    }
  }
  const reading_flag exact(&macro_reading::exact_numbers);
  assignment_operator op = assignment_operator::plain;
  if (read_operator(target, &op)) assign(target, op);
}

}  // namespace zeb
