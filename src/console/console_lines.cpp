#include "console/console_lines.h"

#include <unistd.h>

#include <string>

#include "base/process.h"
#include "base/text_columns.h"
#include "console/console.h"
#include "console/output.h"

namespace zeb {
namespace {

constexpr std::string_view page_cue = "-- more --";

// With `pause =`: a full screen waits for a key.
void count_line() {
  if (!output.console_mode || !output.paging) return;
  if (++output.page_lines < output.screen_rows - 2) return;
  output.page_lines = 0;
  struct cue {
    cue() { write_terminal(page_cue); }
    ~cue() { write_terminal("\r" + std::string(page_cue.size(), ' ') + "\r"); }
  };
  const cue shown;
  check_interrupt(0);
}

bool fits(int columns) {
  return !output.cut_lines || output.cursor_column + columns <= output.screen_columns - 1;
}

// Everything up to the first newline, which is consumed too.
std::string next_line(std::string_view& text, bool& ended) {
  std::string shown;
  ended = false;
  while (!text.empty() && !ended) {
    const std::size_t n = character_bytes(text, 0);
    const std::string_view character = text.substr(0, n);
    text.remove_prefix(n);
    int columns = 0;
    switch (character[0]) {
      case '\n':
        shown += output.console_mode ? "\n\r" : "\n";
        output.cursor_column = 0;
        ended = true;
        continue;
      case '\r':
        output.cursor_column = 0;
        break;
      case '\b':
        columns = output.cursor_column > 0 ? -1 : 0;
        break;
      case '\a':
        if (!output.console_mode) continue;
        break;
      case '\t':
        columns = 8 - output.cursor_column % 8;
        break;
      default:
        columns = character_columns(character);
    }
    if (columns > 0 && !fits(columns)) continue;
    shown += character;
    output.cursor_column += columns;
  }
  return shown;
}

}  // namespace

void show_lines(std::string_view text) {
  std::string waiting;  // lines go out together unless paging may stop between them
  while (!text.empty()) {
    bool ended = false;
    waiting += next_line(text, ended);
    if (ended && output.paging) {
      write_terminal(waiting);
      waiting.clear();
      count_line();
    }
  }
  write_terminal(waiting);
}

}  // namespace zeb
