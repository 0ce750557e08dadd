#include "base/number_text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace zeb {
namespace {

// Of a number out of range: whether it is a large one. Only the power of ten of its first digit
// that isn't 0 tells, as "0.1e400" is large and "1000e-400" is small.
bool is_large(std::string_view number) {
  std::string_view exponent;
  if (const std::size_t e = number.find_first_of("eE"); e != number.npos) {
    exponent = number.substr(e + 1);
    number = number.substr(0, e);
    if (exponent.starts_with('+')) exponent.remove_prefix(1);
  }
  const std::size_t first = number.find_first_of("123456789");
  const std::size_t point = std::min(number.find('.'), number.size());
  const int beyond_int = exponent.starts_with('-') ? -1'000'000'000 : 1'000'000'000;
  const std::int64_t power = exponent.empty() ? 0 : whole_of<int>(exponent).value_or(beyond_int);
  return power + static_cast<std::int64_t>(point) > static_cast<std::int64_t>(first);
}

}  // namespace

std::optional<double> take_real(std::string_view& text) {
  std::string_view rest = text;
  if (rest.size() > 1 && rest[0] == '+' && rest[1] != '-') rest.remove_prefix(1);
  double value = 0;
  const auto [after, fault] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
  if (fault == std::errc::invalid_argument) return std::nullopt;
  const auto length = static_cast<std::size_t>(after - rest.data());
  if (fault == std::errc::result_out_of_range) {
    value = is_large(rest.substr(0, length)) ? std::numeric_limits<double>::infinity() : 0;
    if (rest[0] == '-') value = -value;
  }
  text = rest.substr(length);
  return value;
}

std::optional<double> real_of(std::string_view text) {
  const std::optional<double> value = take_real(text);
  return text.empty() ? value : std::nullopt;
}

std::string exact_text(double value) {
  if (!std::isfinite(value)) return "0";
  char text[400];
  const auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed);
  return std::string(text, result.ptr);
}

}  // namespace zeb
