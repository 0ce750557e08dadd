#include "language/error_place.h"

#include <algorithm>
#include <string_view>

#include "base/text_columns.h"
#include "console/output.h"
#include "language/fit_text.h"

namespace zeb {
namespace {

// In bytes.
constexpr std::size_t shown_before = 37;
constexpr std::size_t shown_width = 75;

}  // namespace

void show_around(error_place& place, const char* text, const char* position) {
  const std::string_view whole(text);
  if (position < text || position > text + whole.size() || whole.empty()) return;
  const auto at_byte = static_cast<std::size_t>(position - text);
  std::size_t first = at_byte < shown_before ? 0 : at_byte - shown_before;
  if (whole.size() - first < shown_width)
    first = whole.size() < shown_width ? 0 : whole.size() - shown_width;
  first = text_in_bytes(whole, first).size();
  place.text = text_in_bytes(whole.substr(first), shown_width);
  std::replace(place.text.begin(), place.text.end(), '\n', ' ');
  place.text = without_controls(place.text);
  place.caret = text_columns(place.text.substr(0, at_byte - first));
}

void emit_place(const error_place& place) {
  for (const std::string& line : place.lines) report_line(line);
  if (place.text.empty()) return;
  emit(place.text, "\n");
  emit(std::string(static_cast<std::size_t>(place.caret), ' '), "^\n");
}

}  // namespace zeb
