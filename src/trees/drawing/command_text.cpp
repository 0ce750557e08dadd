#include "trees/drawing/command_text.h"

#include <algorithm>

#include "console/output.h"
#include "language/input.h"
#include "language/lexer.h"

namespace zeb {

std::string read_text_to_semicolon() {
  const comma_reading commas;
  std::string text;
  int depth = 0;
  skip_blanks_peek();
  for (int c = read_char(); c != ';'; c = read_char()) {
    text += c < ' ' ? ' ' : static_cast<char>(c);
    if (c == '(') ++depth;
    if (c == ')' && depth > 0) --depth;
    commas.set_literal(depth > 0);
  }
  unread_char();
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

void emit_broken_at_blanks(std::string_view text) {
  const auto width = static_cast<std::size_t>(std::clamp(output.screen_columns - 1, 20, 2000));
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
