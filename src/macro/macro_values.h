// The value reader and the expression evaluator of the macro language. There is no operator
// precedence: one accumulator, operators applied in reading order.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// A value with what it was read from.
struct read_number {
  double value = 0;
  bool named = false;          // a variable name: the value is the variable's number
  bool parenthesised = false;  // an expression: a fraction may be dropped
};

/// Counts what is read within something else (expressions, operands, expansions) for its lifetime;
/// ends the command where that goes too deep for the machine's stack.
class nesting_guard {
 public:
  nesting_guard();
  ~nesting_guard();
  nesting_guard(const nesting_guard&) = delete;
  nesting_guard& operator=(const nesting_guard&) = delete;
};

/// The number reader that replaces the plain one: false, with nothing but blanks consumed, where no
/// number, expression, variable or function comes next.
bool macro_read_value(double* value, bool* parenthesised);
/// The same, with its errors: an unknown word is "Unrecognized variable:". -1 (nothing consumed)
/// before ";".
double macro_value();
read_number macro_number();
/// The whole number that was read, as a double. The fraction of an expression in parentheses is
/// dropped; any other is "Expected integral number".
double whole_value(const read_number& number);
/// The same of the number that comes next.
double macro_whole_value();

/// The number that a word in a list of elements stands for: a variable's, or a function's value
/// unless the word is an element's whole name.
bool macro_list_word(std::string_view word, bool names_element, double* value);

/// A subscript: values joined by + * / and, unless it opens a range, by -. What is computed drops
/// its fraction.
double macro_subscript(bool minus_opens_range);

/// How an expression ends.
enum class expression_end { semicolon, parenthesis, bracket };
/// Evaluates up to ";" (left unread) at top level, or up to the matching ")" (consumed; the "(" has
/// been read). The text of the expression as evaluated goes to `echo` if not null.
double evaluate(expression_end end, std::string* echo = nullptr);

}  // namespace zeb
