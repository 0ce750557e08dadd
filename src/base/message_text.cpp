#include "base/message_text.h"

#include <algorithm>
#include <cstdio>

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

std::string with_commas(std::string digits) {
  for (std::size_t i = digits.size(); i > 3;) digits.insert(i -= 3, 1, ',');
  return digits;
}

std::string counted(long long number, std::string_view one, std::string_view many) {
  return std::to_string(number) + " " + std::string(number == 1 ? one : many);
}

std::string joined_list(std::span<const std::string_view> items) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) text += i + 1 == items.size() ? " and " : ", ";
    text += items[i];
  }
  return text;
}

}  // namespace zeb
