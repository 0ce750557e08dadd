#include "trees/drawing/text_lines.h"

#include <algorithm>

#include "base/indices.h"
#include "base/text_columns.h"
#include "console/output.h"
#include "console/screen.h"

namespace zeb {

namespace {

/// End of the piece of `line` that fits in `width` columns, after a blank or comma if there is
/// one.
std::size_t break_point(std::string_view line, int width) {
  const std::size_t most =
      std::max(character_bytes(line, 0), text_in_columns(line, 0, at(width)).size());
  if (most >= line.size()) return line.size();
  const std::size_t blank = line.substr(0, most + 1).find_last_of(" ,");
  if (blank == std::string_view::npos || blank == 0) return most;
  return std::min(most, blank + (line[blank] == ',' ? 1 : 0));
}

}  // namespace

std::vector<std::string> text_lines(std::string_view text, char separator, int width) {
  std::vector<std::string> out;
  for (bool more = true; more;) {
    const std::size_t end = separator ? text.find(separator) : std::string_view::npos;
    more = end != std::string_view::npos;
    std::string_view line = text.substr(0, end);
    if (more) text.remove_prefix(end + 1);
    while (separator && width > 0 && text_columns(line) > width) {
      const std::size_t cut = break_point(line, width);
      if (cut == line.size()) break;  // one character wider than the line
      out.emplace_back(line.substr(0, cut));
      line.remove_prefix(cut);
      while (!line.empty() && line.front() == ' ') line.remove_prefix(1);
    }
    out.emplace_back(line);
  }
  return out;
}

void emit_broken_at_blanks(std::string_view text) {
  const auto width = static_cast<std::size_t>(std::clamp(screen.columns - 1, 20, 2000));
  while (text.size() > width) {
    std::size_t end = text.rfind(' ', width);
    if (end == std::string_view::npos || end == 0) end = text.find(' ', width);
    if (end == std::string_view::npos || end + 1 >= text.size()) break;
    emit(text.substr(0, end), "\n");
    text.remove_prefix(end + 1);
  }
  emit(text, "\n");
}

}  // namespace zeb
