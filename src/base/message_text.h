// Texts of which messages are made.
#pragma once

#include <cstdarg>
#include <span>
#include <string>
#include <string_view>

namespace zeb {

/// Formatted text as a string, at most 9,999 characters.
std::string text_of(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string formatted_text(const char* format, va_list arguments);
/// A size as N.NN followed by " Mbytes", one million bytes being the unit.
std::string megabytes_text(double bytes);
/// "1234567" as "1,234,567".
std::string with_commas(std::string digits);
/// "1 tree", "3 trees": the number and the form of the words that goes with it.
std::string counted(long long number, std::string_view one, std::string_view many);
/// "a", "a and b", "a, b and c".
std::string joined_list(std::span<const std::string_view> items);

}  // namespace zeb
