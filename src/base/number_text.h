// Numbers written in text, the same in every locale. Digits with at most one point, a sign before
// and an exponent after them; also "inf" and "nan".
#pragma once

#include <charconv>
#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace zeb {

/// The number that `text` begins with, which goes on after it; nothing, with the text as it was,
/// where it begins with none. What is too large for a double is infinite, too small zero.
std::optional<double> take_real(std::string_view& text);
/// The number that the whole of `text` is.
std::optional<double> real_of(std::string_view text);
/// The fewest digits that are read back as the same number, without an exponent, which not every
/// reader of numbers takes; "0" for what is infinite or no number.
std::string exact_text(double value);

/// The same for whole numbers, nothing for those that don't fit the type; "+" isn't taken.
template <std::integral whole>
std::optional<whole> take_whole(std::string_view& text) {
  whole value{};
  const char* const end = text.data() + text.size();
  const auto [after, fault] = std::from_chars(text.data(), end, value);
  if (fault != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(after - text.data()));
  return value;
}
template <std::integral whole>
std::optional<whole> whole_of(std::string_view text) {
  const std::optional<whole> value = take_whole<whole>(text);
  return text.empty() ? value : std::nullopt;
}

}  // namespace zeb
