#include "language/lexer.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <climits>
#include <cmath>

#include "base/command.h"
#include "base/errors.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "base/text_columns.h"
#include "language/hooks.h"
#include "language/input.h"

namespace zeb {

lexer_state lexer;

namespace {

constexpr std::array<unsigned char, 256> make_name_chars() {
  std::array<unsigned char, 256> table{};
  for (unsigned c = 'a'; c <= 'z'; ++c) table[c] = static_cast<unsigned char>(c);
  for (unsigned c = 'A'; c <= 'Z'; ++c) table[c] = static_cast<unsigned char>(c);
  for (const char c : {'_', '-', '.', '+'}) {
    table[static_cast<unsigned char>(c)] = static_cast<unsigned char>(c);
  }
  for (unsigned c = 0x80; c < 256; ++c) table[c] = static_cast<unsigned char>(c);
  return table;
}

bool is_letter(int c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool is_digit(int c) { return c >= '0' && c <= '9'; }

int finish_token(int length) {
  lexer.token[length] = 0;
  lexer.token_length = length;
  return length;
}

// Reads into the token while `accept` maps a character to what is stored (0: the end, unread).
template <class mapping>
int read_token(int limit, bool limit_is_error, mapping accept) {
  skip_blanks_peek();
  int length = 0;
  for (;;) {
    const int c = read_char();
    const int stored = accept(c, length);
    if (stored == 0 || (!limit_is_error && length == limit)) {
      unread_char();
      return finish_token(length);
    }
    if (length == limit) {
      finish_token(length);
      error_end("Name too long");
    }
    lexer.token[length++] = static_cast<char>(stored);
  }
}

constexpr int longest_token = static_cast<int>(sizeof lexer.token) - 1;
constexpr int longest_number = 500;

}  // namespace

const std::array<unsigned char, 256> name_chars = make_name_chars();

std::string_view token() { return {lexer.token, static_cast<std::size_t>(lexer.token_length)}; }

int next_nonblank() {
  int c = 0;
  do {
    c = read_char();
  } while (c < 33);
  return c;
}

int skip_blanks_peek() {
  const int c = next_nonblank();
  unread_char();
  return c;
}

bool accept_char(int c) {
  if (next_nonblank() == c) return true;
  unread_char();
  return false;
}

void skip_to(int c) {
  while (read_char() != c) {
  }
  unread_char();
}

int read_word() {
  // A short limit on taxon names leaves every command within reach.
  constexpr int longest_keyword = 32;
  return read_token(std::max(lexer.name_limit, longest_keyword), true,
                    [](int c, int) { return is_letter(c) ? std::tolower(c) : 0; });
}

int read_name() {
  read_token(lexer.name_limit, true, [](int c, int length) {
    if (is_digit(c) && length > 0) return c;
    return static_cast<int>(name_chars[static_cast<std::size_t>(c) & 255]);
  });
  set_token(normal_form(token()));
  return lexer.token_length;
}

int read_item() {
  return read_token(longest_token, false, [](int c, int) { return c < 33 || c == ';' ? 0 : c; });
}

int read_file_name() {
  if (!accept_char('"')) return read_item();
  const comma_reading commas(true);
  int length = 0;
  for (int c = read_char(); c != '"'; c = read_char()) {
    if (c == '\n') error_end("A name that begins with a double quote must end with one");
    if (length == longest_token) error_end("Name too long");
    lexer.token[length++] = static_cast<char>(c);
  }
  return finish_token(length);
}

std::string read_text_to_semicolon() {
  const comma_reading commas;
  std::string text;
  int depth = 0;
  skip_blanks_peek();
  for (int c = read_char(); c != ';'; c = read_char()) {
    text += c < ' ' ? ' ' : static_cast<char>(c);
    if (c == '(') ++depth;
    if (c == ')' && depth > 0) --depth;
    commas.set_literal(depth > 0);
  }
  unread_char();
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

bool at_end_of_word(bool consume) {
  if (consume) read_char();
  const int c = read_char();
  unread_char();
  return c < 33 || c == ';';
}

void check_end() {
  if (skip_blanks_peek() == ';') return;
  read_item();
  error_end("Wrong argument for", command.command_name + ":", token());
}

void expect_end() {
  check_end();
  read_char();
}

std::string read_quoted_text() {
  const comma_reading commas(true);
  int c = read_char();
  if (c < 33) c = read_char();
  std::string text;
  for (; c != ';'; c = read_char()) {
    if (c == ',' && text.ends_with('.')) {
      text.back() = ';';
    } else {
      text += static_cast<char>(c);
    }
  }
  if (input_ended() && text.ends_with('\n')) text.pop_back();  // supplied by the reader
  return text;
}

std::string read_to_semicolon() {
  std::string text;
  for (int c = read_char(); c != ';'; c = read_char()) text += static_cast<char>(c);
  return text;
}

void set_token(std::string_view text) {
  finish_token(static_cast<int>(text.copy(lexer.token, sizeof lexer.token - 1)));
}

void limit_names_to(int length) { lexer.name_limit = length; }

bool is_prefix(std::string_view word, std::string_view name) {
  return !word.empty() && word.size() <= name.size() &&
         strncasecmp(word.data(), name.data(), word.size()) == 0;
}

bool read_value(double* value, bool* parenthesised) {
  const auto expression = hooks_of_language.macros.read_value;
  return expression ? expression(value, parenthesised) : plain_read_value(value, parenthesised);
}

// Digits with at most one point; a decimal fraction begins with a digit.
bool plain_read_value(double* value, bool* parenthesised) {
  if (parenthesised) *parenthesised = false;
  int c = next_nonblank();
  const bool negative = c == '-';
  if (negative) c = read_char();
  if (!is_digit(c)) {
    unread_char();
    if (negative) unread_char();
    return false;
  }
  char text[longest_number];
  int length = 0;
  bool point = false;
  while (is_digit(c) || (c == '.' && !point)) {
    if (c == '.') point = true;
    if (length == longest_number) error_end("Number too long");
    text[length++] = static_cast<char>(c);
    c = read_char();
  }
  unread_char();
  *value = real_of({text, static_cast<std::size_t>(length)}).value_or(0);
  if (negative) *value = -*value;
  return true;
}

namespace {

int integer_of(double value) {
  if (value >= INT_MIN && value <= INT_MAX) return static_cast<int>(value);
  error_end(text_of("Number too large: %.0f", value));
}

}  // namespace

bool read_optional_whole(double* value) {
  bool parenthesised = false;
  if (!read_value(value, &parenthesised)) return false;
  const double cut = std::trunc(*value);
  if (!parenthesised && cut != *value) error_end("Expected integral number");
  *value = cut;
  return true;
}

int read_int() {
  int value = -1;
  read_optional_int(&value);
  return value;
}

bool read_optional_int(int* value) {
  double read = 0;
  if (!read_optional_whole(&read)) return false;
  *value = integer_of(read);
  return true;
}

namespace {

/// "e-06" right after a number; empty, and nothing consumed, where something else follows.
std::string read_exponent() {
  std::string text;
  const auto take = [&text] { text += static_cast<char>(read_char()); };
  if ((peek_char() | 32) != 'e') return {};
  take();
  if (peek_char() == '-' || peek_char() == '+') take();
  if (!is_digit(peek_char())) {
    for (; !text.empty(); text.pop_back()) unread_char();
    return {};
  }
  while (is_digit(peek_char()) && text.size() < longest_number) take();
  return text;
}

}  // namespace

double read_float() {
  double value = 0;
  return read_optional_float(&value) ? value : -1;
}

bool read_optional_float(double* value) {
  if (!read_value(value, nullptr)) return false;
  const std::string exponent = read_exponent();
  if (exponent.empty()) return true;
  char digits[longest_number];
  const auto end = std::to_chars(digits, digits + longest_number, *value, std::chars_format::fixed);
  *value = real_of(std::string(digits, end.ptr) + exponent).value_or(0);
  return true;
}

}  // namespace zeb
