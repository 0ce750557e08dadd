#include "language/options.h"

#include "language/name_matching.h"

namespace zeb {
namespace {

int first_match(std::string_view word, std::span<const std::string_view> keywords) {
  for (std::size_t i = 0; i < keywords.size(); ++i) {
    if (is_prefix(word, keywords[i])) return static_cast<int>(i);
  }
  return -1;
}

}  // namespace

int find_option(std::string_view word, std::span<const std::string_view> keywords, bool* negated) {
  *negated = false;
  int index = first_match(word, keywords);
  if (index >= 0) return index;
  if (word.size() > 2 && is_prefix("no", word)) {
    index = first_match(word.substr(2), keywords);
    *negated = index >= 0;
    if (index >= 0) return index;
  }
  if (matching.match_mode != 1) return -1;
  for (std::size_t i = 0; i < keywords.size(); ++i) {
    if (ask_match(word, keywords[i], "option")) return static_cast<int>(i);
  }
  return -1;
}

void refuse_option_number(bool too_large, long long value, std::string_view missing,
                          const char* too_large_format) {
  if (too_large && too_large_format) error_end_f(too_large_format, static_cast<int>(value));
  error_end(missing);
}

int read_option_number(option_range range, std::string_view missing, const char* too_large_format) {
  int value = -1;
  if (!read_optional_int(&value) || value < range.lowest) {
    refuse_option_number(false, value, missing, too_large_format);
  }
  if (value > range.highest) refuse_option_number(true, value, missing, too_large_format);
  return value;
}

void unknown_option(const char* unknown_format) { error_end_f(unknown_format, lexer.token); }

int read_option_word(std::span<const std::string_view> keywords, const char* unknown_format,
                     bool* negated) {
  if (read_word() == 0) {
    read_item();
    unknown_option(unknown_format);
  }
  const int index = find_option(token(), keywords, negated);
  if (index < 0) unknown_option(unknown_format);
  return index;
}

}  // namespace zeb
