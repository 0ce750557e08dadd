#include "macro/string_conversion.h"
#include "macro/variables.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdint>

#include "base/errors.h"
#include "base/number_text.h"
#include "base/text_columns.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/hooks.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/script_text.h"
#include "macro/variable_reference.h"

namespace zeb {

namespace {

constexpr std::size_t longest_conversion = 8500;

std::string bit_set_text(double value) {
  std::string text;
  const auto bits = static_cast<std::uint32_t>(value_bits(value));
  for (int bit = 0; bit < 32; ++bit) {
    if (bits >> bit & 1U) text += static_cast<char>(bit < 10 ? '0' + bit : 'A' + bit - 10);
  }
  return text;
}

std::string dna_text(double value) {
  static constexpr std::string_view letters = "-AGRCMSVTWKDYHBN";
  if (!(value > -1 && value < 16)) error_end("DNA bitset must be 0-15");
  const auto bits = static_cast<std::size_t>(value);
  return bits == 0 ? std::string() : std::string(1, letters[bits]);
}

std::string protein_text(double value) {
  static constexpr std::string_view letters = "ACDEFGHIKLMNPQRSTVWYU";
  if (value == 2052) return "B";
  if (value == 8200) return "Z";
  std::string text;
  const auto bits = static_cast<std::uint32_t>(value_bits(value));
  for (std::size_t i = 0; i < letters.size(); ++i) {
    if (bits >> i & 1U) text += letters[i];
  }
  return text.size() > 10 ? "X" : text;
}

bool own_fixed_string(std::string_view word, std::string* text) {
  if (word == "bitset") {
    *text = bit_set_text(macro_whole_value());
  } else if (word == "dnabitset") {
    *text = dna_text(macro_whole_value());
  } else if (word == "protbitset") {
    *text = protein_text(macro_whole_value());
  } else if (word == "curwd") {
    char buffer[4096];
    *text = getcwd(buffer, sizeof buffer) ? buffer : "";
    std::replace(text->begin(), text->end(), ' ', '^');
  } else {
    return false;
  }
  return true;
}

// Number or name of a variable within a stored string, up to the closing quote.
int simple_reference(const std::string& stored, std::size_t* at, char quote) {
  const std::size_t close = stored.find(quote, *at + 1);
  if (close == std::string::npos) {
    error_end("Variables within strings can be expanded only with simple expressions");
  }
  const std::string text = stored.substr(*at + 1, close - *at - 1);
  *at = close;
  if (const std::optional<int> written = whole_of<int>(text); written.value_or(-1) >= 0) {
    const double number = static_cast<double>(*written) + var_shift();
    check_variable(number);
    return static_cast<int>(number);
  }
  const int number = find_variable(text);
  if (number < 0)
    error_end("Variables within strings can be expanded only with simple expressions");
  return number;
}

// The stored text with 'N', "N" and %N put in.
std::string expanded(const std::string& stored) {
  std::string text;
  const input_frame& frame = *input.frames[static_cast<std::size_t>(input.top)];
  for (std::size_t i = 0; i < stored.size() && text.size() < longest_conversion; ++i) {
    const char c = stored[i];
    const unsigned char next =
        i + 1 < stored.size() ? static_cast<unsigned char>(stored[i + 1]) : 0;
    if (c == '\'' && (std::isalnum(next) || next == '(')) {
      text += value_text(variable_value(simple_reference(stored, &i, c)));
    } else if (c == '"' && (std::isalnum(next) || next == '(')) {
      const double number = variable_value(simple_reference(stored, &i, c));
      check_variable(number);
      text += value_text(variable_value(static_cast<int>(number)));
    } else if (c == '%' && std::isdigit(next)) {
      const auto argument = static_cast<std::size_t>(next - '0');
      if (argument >= 1 && argument <= frame.arguments.size())
        text += frame.arguments[argument - 1];
      ++i;
    } else {
      text += c;
    }
  }
  if (text.size() > longest_conversion) text.resize(longest_conversion);
  return text;
}

void apply_suffixes(std::string& text) {
  for (;;) {
    const int c = peek_raw_char();
    if (c == '>' || c == '<') {
      read_raw_char();
      const auto mark = static_cast<char>(read_raw_char());
      const std::size_t at = text.find(mark);
      if (at == std::string::npos) continue;
      text = c == '>' ? text.substr(at + 1) : text.substr(0, at);
    } else if (c == ':') {
      read_raw_char();
      const int sign = peek_raw_char();
      if (sign == '-' || sign == '+') read_raw_char();
      const double size = macro_whole_value();
      if (!(size >= 0) || size > 8499)
        error_end("Cannot make string conversion so long ( max. 8500)");
      const auto n = static_cast<std::size_t>(size);
      const auto columns = static_cast<std::size_t>(text_columns(text));
      const std::size_t excess = columns > n ? columns - n : 0;
      if (sign == '+') {
        text = text_in_columns(text, n, columns);
      } else if (sign == '-') {
        text = padded_left(text_in_columns(text, excess, n), static_cast<int>(n));
      } else {
        text = padded_right(text_in_columns(text, 0, n), static_cast<int>(n));
      }
    } else {
      return;
    }
  }
}

// The word after "$", without consuming more than its letters.
std::string read_letters() {
  std::string word;
  int c = read_raw_char();
  for (; std::isalnum(c) || c == '_'; c = read_raw_char()) {
    if (word.size() <= longest_variable_name) word += static_cast<char>(c);
  }
  unread_raw_char();
  return word;
}

std::string variable_text(int base, bool named) {
  const variable_reference reference = read_subscripts(base, named, false);
  return expanded(variable_string(section_start(reference)));
}

}  // namespace

void convert_string() {
  const nesting_guard guard;
  std::string text;
  const int first = peek_raw_char();
  if (std::isalpha(first)) {
    const std::string word = read_letters();
    const int variable = find_variable(word);
    if (variable >= 0) {
      text = variable_text(variable, true);
    } else {
      const bool found = own_fixed_string(word, &text) ||
                         (hooks_of_macro.fixed_string && hooks_of_macro.fixed_string(word, &text));
      if (!found) error_end("Unrecognized variable:", word);
    }
  } else {
    bool named = false;
    const int base = read_variable_number(&named);
    text = variable_text(base, named);
  }
  apply_suffixes(text);
  if (macros.blank_after_strings || text.empty()) text += ' ';
  insert_text(text);
}

}  // namespace zeb
