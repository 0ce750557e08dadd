#include "console/console_line.h"

#include <algorithm>
#include <string>

#include "base/command.h"
#include "base/message_text.h"
#include "base/text_columns.h"
#include "console/console.h"
#include "console/keys.h"
#include "console/line_editor.h"
#include "console/log.h"
#include "console/output.h"
#include "console/screen.h"
#include "console/settings.h"
#include "console/viewer.h"

namespace zeb {
namespace {

// The prompt and as much of the line around the cursor as the screen is wide.
void draw_line(const std::string& prompt, const line_editor& editor, std::size_t& first_column) {
  const auto before = static_cast<std::size_t>(text_columns(prompt));
  const auto whole = static_cast<std::size_t>(std::max(screen.columns - 1, 1));
  const std::size_t width = whole > before + 8 ? whole - before : 8;
  const std::string_view text = editor.text();
  const auto cursor = static_cast<std::size_t>(text_columns(text.substr(0, editor.cursor())));
  if (cursor < first_column) first_column = cursor;
  if (cursor > first_column + width - 1) first_column = cursor - width + 1;
  const std::string_view shown = text_in_columns(text, first_column, width);
  const std::string_view left = text_in_columns(text, first_column, cursor - first_column);
  std::string drawn = "\r" + prompt;
  drawn += shown;
  drawn += clear_to_line_end_code();
  drawn += "\r" + prompt;
  drawn += left;
  write_terminal(drawn);
}

}  // namespace

bool read_console_line(char* text, int size) {
  if (settings.auto_view) show_buffer_in_viewer();
  const std::string& prompt = command.prompt;
  line_editor editor(entered_lines(), static_cast<std::size_t>(size - 2));
  write_console("\n");
  std::size_t first_column = 0;
  bool told_full = false;
  draw_line(prompt, editor, first_column);
  for (;;) {
    const int key = wait_for_key();
    if (!user_present()) return false;
    if (key == key_page_up) {
      show_buffer_in_viewer();
      write_console("\n");
      draw_line(prompt, editor, first_column);
      continue;
    }
    const line_editor::outcome outcome = editor.take(key);
    if (outcome == line_editor::outcome::entered) break;
    if (outcome == line_editor::outcome::refused && settings.beep) ring_bell();
    if (outcome == line_editor::outcome::full && !told_full) {
      told_full = true;
      write_console(text_of("\nThis line is full (%i bytes): what is typed now is lost\n",
                            static_cast<int>(editor.text().size())));
    }
    if (!editor.in_character()) draw_line(prompt, editor, first_column);
  }
  write_terminal("\n\r");
  begin_page();
  entered_lines().add(editor.text());
  if (settings.echo_console_to_log && !(output.output_mask & no_log))
    write_log("\n" + prompt + editor.text() + "\n");
  const std::string line = editor.text() + "\n";
  line.copy(text, line.size());
  text[line.size()] = 0;
  return true;
}

}  // namespace zeb
