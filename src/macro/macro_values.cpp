#include "macro/macro_values.h"
#include "macro/variables.h"

#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

#include "base/errors.h"
#include "base/number_text.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/hooks.h"
#include "macro/macro_state.h"
#include "macro/operand_text.h"
#include "macro/script_text.h"

namespace zeb {

namespace {

constexpr std::size_t longest_token = 500;
constexpr int deepest_nesting = 1000;  // the machine's stack holds many more
// How deep what is being read lies within something else.
struct nesting_state {
  int depth = 0;
};
nesting_state nesting;

constexpr std::array<bool, 256> make_token_ends() {
  std::array<bool, 256> ends{};
  for (std::size_t c = 0; c < 33; ++c) ends[c] = true;
  for (const char c : std::string_view("|!&()*+-/@;<=>[]{}\"',:"))
    ends[static_cast<unsigned char>(c)] = true;
  return ends;
}
constexpr std::array<bool, 256> token_ends = make_token_ends();

bool ends_token(int c) { return token_ends[static_cast<std::size_t>(c) & 255]; }

// Reads a token; its end stays unread. In a number the token ends at the first character that can't
// belong to it.
std::string read_token() {
  const reading_flag quotes(&macro_reading::no_quotes);
  std::string token;
  bool number = false;
  bool point = false;
  for (;;) {
    const int c = read_char();
    if (token.empty()) number = std::isdigit(c);
    bool ends = ends_token(c);
    if (number && !std::isdigit(c)) {
      if (c == '.' && !point) {
        point = true;
      } else {
        ends = true;
      }
    }
    if (ends || token.size() == longest_token) {
      unread_char();
      return token;
    }
    token += static_cast<char>(c);
  }
}

double read_bit_set() {
  double sum = 0;
  for (;;) {
    if (accept_char('}')) return sum;
    const int next = skip_blanks_peek();
    if (next == ';' || next == '{')
      error_end("Symbol", static_cast<char>(next), "found when expecting number or expression");
    const double bit = macro_whole_value();
    if (bit < 0) error_end("Cannot set negative bits: -" + value_text(-bit));
    if (bit > 29) error_end("Can't store more than 30 bits (0-29) in variables");
    const double value = std::ldexp(1.0, static_cast<int>(bit));
    if (!(static_cast<std::int64_t>(sum) & static_cast<std::int64_t>(value))) sum += value;
  }
}

enum class reading { strict, tolerant };

// Puts a word back that was read in one piece of text. False when the text was refilled meanwhile.
bool put_back(const char* from, std::size_t length) {
  if (input.read_position != from + length) return false;
  read_on_at(from);
  return true;
}

// The value reader. Returns false only in tolerant reading, with nothing but blanks consumed.
bool read_operand(read_number* result, reading mode) {
  const nesting_guard guard;
  const reading_flag exact(&macro_reading::exact_numbers);
  *result = {};
  int c = skip_blanks_peek();
  double sign = 1;
  if (c == '-') {
    if (mode == reading::tolerant) {
      read_char();
      const int next = peek_raw_char();
      if (!std::isalnum(next) && next != '(' && next != '\'' && next != '"' && next != '$' &&
          next != '#' && next != '{' && next != '%') {
        unread_char();
        return false;
      }
    } else {
      read_char();
    }
    sign = -1;
    c = skip_blanks_peek();
  }
  if (c == ';') {
    if (mode == reading::tolerant) return false;
    result->value = -1;
    return true;
  }
  if (c == '(') {
    read_char();
    result->value = sign * evaluate(expression_end::parenthesis);
    result->parenthesised = true;
    return true;
  }
  if (c == '{') {
    if (mode == reading::tolerant) return false;
    read_char();
    result->value = sign * read_bit_set();
    return true;
  }
  const bool starts_word = std::isalnum(c) || c == '_' || (c >= 0x80 && macros.names_as_numbers);
  if (!starts_word) {
    if (mode == reading::tolerant) return false;
    error_end("Symbol", static_cast<char>(c), "found when expecting number or expression");
  }
  const char* from = input.read_position;
  const std::string token = read_token();
  if (std::isdigit(static_cast<unsigned char>(token[0]))) {
    result->value = sign * real_of(token).value_or(0);
    return true;
  }
  const int variable = find_variable(token);
  if (variable >= 0) {
    result->value = sign * variable;
    result->named = true;
    return true;
  }
  const auto& hooks = hooks_of_macro;
  if ((hooks.function_value && hooks.function_value(token, &result->value)) ||
      (macros.names_as_numbers && hooks.element_number &&
       hooks.element_number(token, &result->value))) {
    result->value *= sign;
    return true;
  }
  // As the language writes them; elsewhere such words may be names.
  if (mode == reading::strict && (token == "inf" || token == "nan")) {
    result->value = token == "inf" ? sign * std::numeric_limits<double>::infinity()
                                   : std::numeric_limits<double>::quiet_NaN();
    return true;
  }
  if (mode == reading::tolerant && sign > 0 && put_back(from, token.size())) return false;
  error_end("Unrecognized variable:", token);
}

double apply(char op, double left, double right) {
  switch (op) {
    case '+':
      return left + right;
    case '-':
      return left - right;
    case '*':
      return left * right;
    case '/':
      if (right == 0) error_end("Can't divide by zero");
      return left / right;
    case '&':
      return value_bits(left) & value_bits(right);
    case '|':
      return value_bits(left) | value_bits(right);
    default:
      return value_bits(left) ^ value_bits(right);
  }
}

// Two-character logical operators, by one letter each.
enum class logical {
  none,
  equal,
  different,
  both,
  either,
  greater,
  less,
  greater_equal,
  less_equal
};

double compare(logical op, double left, double right) {
  switch (op) {
    case logical::equal:
      return left == right;
    case logical::different:
      return left != right;
    case logical::both:
      return left != 0 && right != 0;
    case logical::either:
      return left != 0 || right != 0;
    case logical::greater:
      return left > right;
    case logical::less:
      return left < right;
    case logical::greater_equal:
      return left >= right;
    case logical::less_equal:
      return left <= right;
    case logical::none:
      break;
  }
  return right;
}

bool is_bit_operand_start(int c) {
  return std::isdigit(c) || c == '\'' || c == '"' || c == '(' || c == ';' || c < 33;
}

// Reads the rest of a logical operator that begins with `c`.
logical read_logical(int c) {
  const int next = peek_raw_char();
  auto two = [&](logical op) {
    read_raw_char();
    return op;
  };
  if (c == '=' && next == '=') return two(logical::equal);
  if (c == '!' && next == '=') return two(logical::different);
  if (c == '&' && next == '&') return two(logical::both);
  if (c == '|' && next == '|') return two(logical::either);
  if (c == '>' && next == '=') return two(logical::greater_equal);
  if (c == '<' && next == '=') return two(logical::less_equal);
  const bool has_other_symbol = next == '<' || next == '>' || next == '&' || next == '|';
  if (c == '>' && !has_other_symbol) return logical::greater;
  if (c == '<' && !has_other_symbol) return logical::less;
  std::string symbol(1, static_cast<char>(c));
  if (next > 32 && next != ';') symbol += static_cast<char>(next);
  error_end("\nSymbol", symbol, "is not a logical expression or operator");
}

const char* symbol_of(logical op) {
  static constexpr const char* symbols[] = {"", "==", "!=", "&&", "||", ">", "<", ">=", "<="};
  return symbols[static_cast<int>(op)];
}

double read_evaluated_operand(std::string* echo) {
  skip_comments();
  if (accept_char('(')) {
    if (echo) *echo += "(";
    const double value = evaluate(expression_end::parenthesis, echo);
    if (echo) *echo += ")";
    return value;
  }
  if (accept_char('!')) {
    const nesting_guard guard;
    if (echo) *echo += "!";
    return read_evaluated_operand(echo) == 0;
  }
  if (accept_char('-')) {
    const nesting_guard guard;
    if (echo) *echo += "-";
    return -read_evaluated_operand(echo);
  }
  if (skip_blanks_peek() == ';') error_end("Found unexpected ';'");
  const double value = macro_value();
  if (echo) *echo += value_text(value);
  return value;
}

// An expression, evaluated as it is read.
class expression_reader {
 public:
  expression_reader(expression_end end, std::string* echo) : end_(end), echo_(echo) {}

  double run() {
    begin();
    do {
      take_operand();
    } while (take_operator());
    return accumulator_;
  }

 private:
  void begin() {
    skip_comments();
    if (peek_raw_char() == '$') return;
    if (accept_char('[')) end_ = expression_end::bracket;
    const int c = skip_blanks_peek();
    if (std::strchr("=+&*/^|", c) && c)
      error_end("Cannot start expression with", static_cast<char>(c));
  }

  void take_operand() {
    const logical asked = std::exchange(pending_, logical::none);
    if ((asked == logical::both && left_ == 0) || (asked == logical::either && left_ != 0)) {
      skip_operand();
      if (echo_) *echo_ += "...";
      accumulator_ = asked == logical::either;
      return;
    }
    const bool whole_side =
        std::exchange(first_, false) || asked == logical::both || asked == logical::either;
    double operand = 0;
    if (whole_side && read_string_comparison(&operand)) {
      if (echo_) *echo_ += value_text(operand);
    } else {
      operand = read_evaluated_operand(echo_);
    }
    accumulator_ = compare(asked, left_, apply(op_, accumulator_, operand));
  }

  // False at the end of the expression.
  bool take_operator() {
    skip_comments();
    const int c = next_nonblank();
    if (c == ';') {
      if (end_ != expression_end::semicolon) error_end("Unbalanced '(' in expression");
      unread_char();
      return false;
    }
    if (c == ')' || ((c == ']' || c == ',') && end_ == expression_end::bracket)) {
      if (c == ')' && end_ == expression_end::semicolon) error_end("Unbalanced ')' in expression");
      if (c == ',') unread_char();
      return false;
    }
    if (std::strchr("+-*/^", c) ||
        ((c == '&' || c == '|') && is_bit_operand_start(peek_raw_char()))) {
      op_ = static_cast<char>(c);
      if (echo_) (*echo_ += ' ').append(1, op_) += ' ';
      return true;
    }
    if (!std::strchr("&|=!<>", c))
      error_end("Found illegal character in expression:", static_cast<char>(c));
    pending_ = read_logical(c);
    if (echo_) ((*echo_ += ' ') += symbol_of(pending_)) += ' ';
    left_ = std::exchange(accumulator_, 0.0);
    op_ = '+';
    return true;
  }

  expression_end end_;
  std::string* echo_;
  bool first_ = true;
  double accumulator_ = 0;
  double left_ = 0;
  char op_ = '+';
  logical pending_ = logical::none;
};

}  // namespace

nesting_guard::nesting_guard() {
  if (++nesting.depth <= deepest_nesting) return;
  nesting.depth = 0;
  error_end("Expression is nested too deep");
}

nesting_guard::~nesting_guard() {
  if (nesting.depth > 0) --nesting.depth;
}

bool macro_read_value(double* value, bool* parenthesised) {
  read_number number;
  if (!read_operand(&number, reading::tolerant)) return false;
  *value = number.value;
  if (parenthesised) *parenthesised = number.parenthesised;
  return true;
}

read_number macro_number() {
  read_number number;
  read_operand(&number, reading::strict);
  return number;
}

double macro_value() { return macro_number().value; }

double whole_value(const read_number& number) {
  const double whole = std::trunc(number.value);
  if (whole != number.value && !number.parenthesised) error_end("Expected integral number");
  return whole;
}

double macro_whole_value() { return whole_value(macro_number()); }

bool macro_list_word(std::string_view word, bool names_element, double* value) {
  const int variable = find_variable(word);
  if (variable >= 0) {
    *value = variable;
    return true;
  }
  return !names_element && hooks_of_macro.function_value &&
         hooks_of_macro.function_value(word, value);
}

double macro_subscript(bool minus_opens_range) {
  read_number number = macro_number();
  for (;;) {
    const int c = skip_blanks_peek();
    if (c != '+' && c != '*' && c != '/' && (c != '-' || minus_opens_range))
      return whole_value(number);
    read_char();
    number.value = apply(static_cast<char>(c), number.value, macro_value());
    number.parenthesised = true;
  }
}

double evaluate(expression_end end, std::string* echo) {
  const nesting_guard guard;
  const reading_flag exact(&macro_reading::exact_numbers);
  return expression_reader(end, echo).run();
}

}  // namespace zeb
