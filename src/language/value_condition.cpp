#include "language/value_condition.h"

#include <limits>
#include <string>

#include "base/errors.h"
#include "base/scores.h"
#include "language/input.h"
#include "language/lexer.h"

namespace zeb {
namespace {

/// At level 0 the reader makes a comma the end of a command, so there it comes as ";".
bool accept_comma() { return accept_char(',') || (input.top == 0 && accept_char(';')); }

double read_bound(std::string_view word) {
  double value = 0;
  if (!read_optional_float(&value)) error_end("Must give a value to compare with", word);
  return value;
}

}  // namespace

bool value_condition::holds(double value) const {
  constexpr auto kind = score_kind::fractional;
  if (lowest_open ? is_within_bound(value, lowest, kind) : is_better_score(value, lowest, kind)) {
    return false;
  }
  return highest_open ? is_better_score(value, highest, kind)
                      : is_within_bound(value, highest, kind);
}

value_condition read_condition(std::string_view word) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  value_condition condition{.lowest = -infinity, .highest = infinity};
  const int sign = skip_blanks_peek();
  if (sign == '(') {
    read_char();
    condition.lowest = read_bound(word);
    if (!accept_comma()) error_end("Ranges must be given as two values separated by comma");
    condition.highest = read_bound(word);
    if (!accept_char(')')) error_end("Need closing parenthesis after second value of range");
    return condition;
  }
  if (sign != '=' && sign != '<' && sign != '>') {
    error_end_f("String \"%s\" must be followed by =, <, >, or ( symbols",
                std::string(word).c_str());
  }
  read_char();
  const bool with_end = sign != '=' && accept_char('=');
  const double value = read_bound(word);
  if (sign != '<') condition.lowest = value;
  if (sign != '>') condition.highest = value;
  condition.lowest_open = sign == '>' && !with_end;
  condition.highest_open = sign == '<' && !with_end;
  return condition;
}

}  // namespace zeb
