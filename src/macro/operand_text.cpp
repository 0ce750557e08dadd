#include "macro/operand_text.h"

#include <cctype>
#include <cstring>
#include <optional>
#include <string>

#include "base/errors.h"
#include "base/number_text.h"
#include "language/input.h"
#include "macro/script_text.h"

namespace zeb {

namespace {

int peek_after_blanks(std::string* passed = nullptr) {
  for (;;) {
    const int c = peek_raw_char();
    if (c >= 33) return c;
    read_raw_char();
    if (passed) *passed += static_cast<char>(c);
  }
}

// Reads to what closes the parenthesis, bracket or brace that was opened.
void skip_to_closing() {
  for (int depth = 1; depth > 0;) {
    const int c = read_raw_char();
    if (c == ';') error_end("Unbalanced '(' in expression");
    if (std::strchr("([{", c)) ++depth;
    if (std::strchr(")]}", c)) --depth;
  }
}

void skip_quoted(int quote) {
  for (int c = read_raw_char(); c != quote; c = read_raw_char()) {
    if (c == ';') error_end("Each quote or single quote must be matched");
  }
}

bool ends_operand(int c) { return c < 33 || std::strchr("|&=!<>+-*/^);,]}", c) != nullptr; }

// The string after "$", which comes next; nothing where "$" stands for itself.
std::optional<std::string> take_string() {
  read_char();
  const bool converted = last_char_was_plain();
  unread_char();
  if (!converted) return {};
  return take_expansion();
}

std::string without_blanks(const std::string& text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string read_plain_word() {
  std::string word;
  int c = read_char();
  for (; c > 32 && !std::strchr(");&|", c); c = read_char()) word += static_cast<char>(c);
  unread_char();
  if (word.empty()) error_end("A string has nothing to be compared with");
  return word;
}

bool are_equal(const std::string& a, const std::string& b) {
  const std::optional<double> first = real_of(a);
  const std::optional<double> second = real_of(b);
  return first && second ? *first == *second : a == b;
}

// "==" or "!=" with the blanks around it, which go to `passed`. 0 where something else comes.
int read_comparison(std::string& passed) {
  const int c = peek_after_blanks(&passed);
  if (c != '=' && c != '!') return 0;
  passed += static_cast<char>(read_raw_char());
  if (peek_raw_char() != '=') return 0;
  passed += static_cast<char>(read_raw_char());
  peek_after_blanks(&passed);
  return c;
}

}  // namespace

void skip_comments() {
  while (peek_after_blanks() == '/') {
    read_raw_char();
    if (peek_raw_char() != '*') return unread_raw_char();
    read_raw_char();
    skip_rest_of_comment();
  }
}

void skip_operand() {
  const reading_flag plain(&macro_reading::no_expansion);
  int c = peek_after_blanks();
  while (c == '!' || c == '-') {
    read_raw_char();
    c = peek_after_blanks();
  }
  if (c == '(' || c == '{') {
    read_raw_char();
    return skip_to_closing();
  }
  for (c = peek_raw_char(); !ends_operand(c); c = peek_raw_char()) {
    read_raw_char();
    if (c == '(' || c == '[' || c == '{') skip_to_closing();
    if (c == '\'' || c == '"') skip_quoted(c);
  }
  // The arguments of a function may stand after blanks.
  if (peek_after_blanks() != '[') return;
  read_raw_char();
  skip_to_closing();
}

bool read_string_comparison(double* value) {
  if (peek_after_blanks() != '$') return false;
  const std::optional<std::string> taken = take_string();
  if (!taken) return false;
  const std::string left = without_blanks(*taken);
  std::string passed;
  const int comparison = read_comparison(passed);
  // A number is compared as such, unless it is with a string.
  if (!comparison || (real_of(left) && peek_raw_char() != '$')) {
    insert_text(*taken + passed);
    return false;
  }
  const std::optional<std::string> other =
      peek_raw_char() == '$' ? take_string() : std::optional<std::string>();
  const std::string right = other ? without_blanks(*other) : read_plain_word();
  *value = are_equal(left, right) == (comparison == '=');
  return true;
}

}  // namespace zeb
