#include "console/console_line.h"

#include <algorithm>
#include <string>
#include <vector>

#include "base/command.h"
#include "base/message_text.h"
#include "base/text_columns.h"
#include "console/console.h"
#include "console/hooks.h"
#include "console/keys.h"
#include "console/line_editor.h"
#include "console/log.h"
#include "console/output.h"
#include "console/screen.h"
#include "console/settings.h"
#include "console/viewer.h"

namespace zeb {
namespace {

constexpr std::size_t most_offered = 300;  // words in a list of what a line can go on with

std::string common_beginning(const std::vector<std::string>& words) {
  std::string common = words.front();
  for (const std::string& word : words) {
    const auto ends = std::mismatch(common.begin(), common.end(), word.begin(), word.end());
    common.erase(ends.first, common.end());
  }
  return common;
}

// A line that is being typed, on the screen.
class typed_line {
 public:
  typed_line(const std::string& prompt, std::size_t longest)
      : prompt_(prompt), editor_(entered_lines(), longest) {}
  const std::string& text() const { return editor_.text(); }

  // The prompt and as much of the line around the cursor as the screen is wide.
  void draw() {
    const std::string prompt =
        editor_.is_searching() ? "(history: \"" + editor_.searched() + "\") " : prompt_;
    const auto before = static_cast<std::size_t>(text_columns(prompt));
    const auto whole = static_cast<std::size_t>(std::max(screen.columns - 1, 1));
    const std::size_t width = whole > before + 8 ? whole - before : 8;
    const std::string_view line = editor_.text();
    const auto cursor = static_cast<std::size_t>(text_columns(line.substr(0, editor_.cursor())));
    if (cursor < first_column_) first_column_ = cursor;
    if (cursor > first_column_ + width - 1) first_column_ = cursor - width + 1;
    std::string drawn = "\r" + prompt;
    drawn += text_in_columns(line, first_column_, width);
    const int columns = text_columns(drawn);
    const std::string clear = clear_to_line_end_code();
    if (clear.empty() && columns < columns_drawn_)
      drawn.append(static_cast<std::size_t>(columns_drawn_ - columns), ' ');
    columns_drawn_ = columns;
    drawn += clear;
    drawn += "\r" + prompt;
    drawn += text_in_columns(line, first_column_, cursor - first_column_);
    write_terminal(drawn);
  }

  // False when the line is entered.
  bool take(int key) {
    if (key == key_page_up) {
      show_buffer_in_viewer();
      write_console("\n");
    } else if (key == '\t' && completes()) {
      complete();
    } else if (!edit(key)) {
      return false;
    }
    if (!editor_.in_character()) draw();
    return true;
  }

 private:
  // Where data are pasted, or typed after the line of their command, <tab> is a blank.
  bool completes() const {
    return hooks_of_console.complete && prompt_ == "zeb*>" && !editor_.is_searching() &&
           !more_keys_wait();
  }

  bool edit(int key) {
    const line_editor::outcome outcome = editor_.take(key);
    if (outcome == line_editor::outcome::entered) return false;
    if (outcome == line_editor::outcome::refused) refuse();
    if (outcome == line_editor::outcome::full && !told_full_) {
      told_full_ = true;
      write_console(text_of("\nThis line is full (%i bytes): what is typed now is lost\n",
                            static_cast<int>(editor_.text().size())));
    }
    return true;
  }

  static void refuse() {
    if (settings.beep) ring_bell();
  }

  // As far as all words go that are possible; a second time shows them.
  void complete() {
    const std::string before = editor_.text().substr(0, editor_.cursor());
    const completion found = hooks_of_console.complete(before);
    if (found.words.empty()) return refuse();
    const std::string common = common_beginning(found.words);
    if (before.substr(found.begin) != common) {
      if (!editor_.replace_before_cursor(found.begin, common)) refuse();
    } else if (found.words.size() > 1) {
      show(found.words);
    } else {
      refuse();
    }
  }

  static void show(const std::vector<std::string>& words) {
    int widest = 0;
    for (const std::string& word : words) widest = std::max(widest, text_columns(word));
    const int in_row = std::max((screen.columns - 1) / (widest + 2), 1);
    const std::size_t shown = std::min(words.size(), most_offered);
    std::string list;
    for (std::size_t i = 0; i < shown; ++i) {
      const bool first_in_row = i % static_cast<std::size_t>(in_row) == 0;
      list += first_in_row ? "\n" : "  ";
      list += words[i];
      list.append(static_cast<std::size_t>(widest - text_columns(words[i])), ' ');
    }
    if (shown < words.size()) list += text_of("\n(the first %i)", static_cast<int>(shown));
    write_console(list + "\n");
  }

  const std::string& prompt_;
  line_editor editor_;
  std::size_t first_column_ = 0;  // of the line, on the screen
  int columns_drawn_ = 0;         // what a terminal that can't clear a line has to blank out
  bool told_full_ = false;
};

}  // namespace

bool read_console_line(char* text, int size) {
  if (settings.auto_view) show_buffer_in_viewer();
  typed_line line(command.prompt, static_cast<std::size_t>(size - 2));
  write_console("\n");
  line.draw();
  for (bool open = true; open;) {
    const int key = wait_for_key();
    if (!user_present()) return false;
    open = line.take(key);
  }
  write_terminal("\n\r");
  begin_page();
  entered_lines().add(line.text());
  if (settings.echo_console_to_log && !(output.output_mask & no_log)) {
    write_log("\n" + command.prompt + line.text() + "\n");
  }
  const std::string entered = line.text() + "\n";
  entered.copy(text, entered.size());
  text[entered.size()] = 0;
  return true;
}

}  // namespace zeb
