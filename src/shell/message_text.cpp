// Texts of which messages are made.
#include <algorithm>
#include <cstdio>

#include "shell/output.h"

namespace zeb {

std::string formatted_text(const char* format, va_list arguments) {
  constexpr std::size_t longest = 10000;
  char text[longest];
  const int n = std::vsnprintf(text, longest, format, arguments);
  return {text, std::min(longest - 1, static_cast<std::size_t>(std::max(n, 0)))};
}

std::string text_of(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = formatted_text(format, arguments);
  va_end(arguments);
  return text;
}

std::string megabytes_text(double bytes) { return text_of("%.2f Mbytes", bytes / 1e6); }

std::string count_with_commas(unsigned long long n) {
  std::string text = std::to_string(n);
  for (auto i = static_cast<std::ptrdiff_t>(text.size()) - 3; i > 0; i -= 3) {
    text.insert(static_cast<std::size_t>(i), 1, ',');
  }
  return text;
}

std::string joined_list(std::initializer_list<std::string_view> items) {
  std::string text;
  std::size_t place = 0;
  for (const std::string_view item : items) {
    if (place > 0) text += place + 1 == items.size() ? " and " : ", ";
    text += item;
    ++place;
  }
  return text;
}

}  // namespace zeb
