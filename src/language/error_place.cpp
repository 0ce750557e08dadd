#include "language/error_place.h"

#include <algorithm>
#include <cstring>

#include "console/output.h"

namespace zeb {
namespace {

constexpr std::ptrdiff_t shown_before = 37;
constexpr std::ptrdiff_t shown_width = 75;

}  // namespace

void show_around(error_place& place, const char* text, const char* position) {
  const char* end = text + std::strlen(text);
  if (position < text || position > end || text == end) return;
  const std::ptrdiff_t length = end - text;
  const std::ptrdiff_t at_byte = position - text;
  std::ptrdiff_t first = std::max<std::ptrdiff_t>(0, at_byte - shown_before);
  if (length - first < shown_width) first = std::max<std::ptrdiff_t>(0, length - shown_width);
  place.text.assign(text + first, static_cast<std::size_t>(std::min(shown_width, length - first)));
  for (char& c : place.text) {
    if (static_cast<unsigned char>(c) < 32) c = ' ';
  }
  place.caret = static_cast<int>(at_byte - first);
}

void emit_place(const error_place& place) {
  for (const std::string& line : place.lines) report_line(line);
  if (place.text.empty()) return;
  emit(place.text, "\n");
  emit(std::string(static_cast<std::size_t>(place.caret), ' '), "^\n");
}

}  // namespace zeb
