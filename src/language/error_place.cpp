#include "language/error_place.h"

#include <algorithm>
#include <cstring>

#include "base/text_columns.h"
#include "console/output.h"

namespace zeb {
namespace {

constexpr std::ptrdiff_t shown_before = 37;
constexpr std::ptrdiff_t shown_width = 75;

// A byte of UTF-8 that doesn't begin a character.
bool is_inside_character(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }

}  // namespace

void show_around(error_place& place, const char* text, const char* position) {
  const char* end = text + std::strlen(text);
  if (position < text || position > end || text == end) return;
  const std::ptrdiff_t length = end - text;
  const std::ptrdiff_t at_byte = position - text;
  std::ptrdiff_t first = std::max<std::ptrdiff_t>(0, at_byte - shown_before);
  if (length - first < shown_width) first = std::max<std::ptrdiff_t>(0, length - shown_width);
  while (first < at_byte && is_inside_character(text[first])) ++first;
  place.text = text_in_bytes({text + first, static_cast<std::size_t>(length - first)}, shown_width);
  place.caret = text_columns(place.text.substr(0, static_cast<std::size_t>(at_byte - first)));
  for (char& c : place.text) {
    if (static_cast<unsigned char>(c) < 32) c = ' ';
  }
}

void emit_place(const error_place& place) {
  for (const std::string& line : place.lines) report_line(line);
  if (place.text.empty()) return;
  emit(place.text, "\n");
  emit(std::string(static_cast<std::size_t>(place.caret), ' '), "^\n");
}

}  // namespace zeb
