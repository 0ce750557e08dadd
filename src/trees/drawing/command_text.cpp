#include "trees/drawing/command_text.h"

#include <algorithm>

#include "console/output.h"
#include "console/screen.h"

namespace zeb {

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
