#include "console/line_editor.h"

#include <algorithm>

#include "base/number_text.h"
#include "base/text_columns.h"
#include "console/keys.h"

namespace zeb {
namespace {

constexpr std::size_t most_lines = 56;
constexpr std::size_t longest_line = 255;
constexpr char line_mark = 1;

// Control keys that editors on terminals share.
constexpr int control(char letter) { return letter - '@'; }

}  // namespace

void console_history::add(std::string_view line) {
  if (line.find_first_not_of(' ') == std::string_view::npos) return;
  if (line.size() > longest_line) {
    std::size_t n = 0;
    while (n + character_bytes(line, n) <= longest_line) n += character_bytes(line, n);
    line = line.substr(0, n);
  }
  if (!lines_.empty() && lines_.back() == line) return;
  lines_.emplace_back(line);
  if (lines_.size() > most_lines) lines_.pop_front();
}

std::string console_history::file_text() const {
  std::string text = std::to_string(lines_.size()) + " ";
  for (const std::string& line : lines_) {
    text += line;
    text += line_mark;
  }
  return text;
}

void console_history::read_file_text(std::string_view text) {
  std::size_t count = take_whole<std::size_t>(text).value_or(0);
  if (!text.starts_with(' ')) return;
  text.remove_prefix(1);
  for (; count > 0; --count) {
    const std::size_t end = text.find(line_mark);
    if (end == std::string_view::npos) return;
    const std::string_view line = text.substr(0, end);
    const bool printable =
        std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' || c < 0; });
    if (printable) add(line);
    text.remove_prefix(end + 1);
  }
}

line_editor::outcome line_editor::take(int key) {
  if (key >= 0x80 && key <= 0xFF) {
    partial_ += static_cast<char>(key);
    if (is_partial_character(partial_)) return outcome::going_on;
    std::string character;
    character.swap(partial_);
    return searching_ ? find(searched_ + character, recalled_) : insert(character);
  }
  partial_.clear();
  return searching_ ? take_in_search(key) : take_in_line(key);
}

line_editor::outcome line_editor::take_in_line(int key) {
  switch (key) {
    case '\n':
    case '\r':
      return outcome::entered;
    case key_up:
      return recalled_ > 0 ? recall(recalled_ - 1) : outcome::refused;
    case key_down:
      return recalled_ < history_.size() ? recall(recalled_ + 1) : outcome::refused;
    case key_backspace:
    case '\b':
    case 127:
      if (cursor_ == 0) return outcome::refused;
      erase(cursor_ - character_bytes_before(text_, cursor_), cursor_);
      return outcome::going_on;
    case key_delete:
    case control('D'):
      if (cursor_ == text_.size()) return outcome::refused;
      erase(cursor_, cursor_ + character_bytes(text_, cursor_));
      return outcome::going_on;
    case control('K'):
      erase(cursor_, text_.size());
      return outcome::going_on;
    case control('U'):
      erase(0, cursor_);
      return outcome::going_on;
    case escape_key:
      erase(0, text_.size());
      return outcome::going_on;
    case control('R'):
      return search_on();
    case '\t':
      return insert(" ");
    default:
      if (key >= ' ' && key < 127) return insert(std::string(1, static_cast<char>(key)));
      move(key);
      return outcome::going_on;
  }
}

// Other keys than those of the search end it, and act on the line that was found.
line_editor::outcome line_editor::take_in_search(int key) {
  switch (key) {
    case control('R'):
      return search_on();
    case control('G'):
    case escape_key:
      searching_ = false;
      return recall(history_.size());
    case key_backspace:
    case '\b':
    case 127:
      if (searched_.empty()) return outcome::refused;
      searched_.resize(searched_.size() - character_bytes_before(searched_, searched_.size()));
      return find(std::string(searched_), history_.size());
    case key_resize:
      return outcome::going_on;
    default:
      if (key >= ' ' && key < 127) return find(searched_ + static_cast<char>(key), recalled_);
      searching_ = false;
      return take_in_line(key);
  }
}

line_editor::outcome line_editor::search_on() {
  if (!searching_) {
    if (history_.size() == 0) return outcome::refused;
    recall(history_.size());
    searched_.clear();
    searching_ = true;
    return outcome::going_on;
  }
  return recalled_ > 0 ? find(std::string(searched_), recalled_ - 1) : outcome::refused;
}

// The newest line up to number `newest` that holds the text; without one all stays as it was.
line_editor::outcome line_editor::find(const std::string& wanted, std::size_t newest) {
  for (std::size_t i = std::min(newest + 1, history_.size()); i-- > 0;) {
    const std::size_t at = history_.line(i).find(wanted);
    if (at == std::string::npos) continue;
    searched_ = wanted;
    recall(i);
    cursor_ = at;
    return outcome::going_on;
  }
  return outcome::refused;
}

void line_editor::move(int key) {
  if (key == key_left && cursor_ > 0) cursor_ -= character_bytes_before(text_, cursor_);
  if (key == key_right && cursor_ < text_.size()) cursor_ += character_bytes(text_, cursor_);
  if (key == key_home || key == control('A')) cursor_ = 0;
  if (key == key_end || key == control('E')) cursor_ = text_.size();
}

bool line_editor::replace_before_cursor(std::size_t begin, std::string_view text) {
  if (begin > cursor_ || text_.size() - (cursor_ - begin) + text.size() > longest_) return false;
  text_.replace(begin, cursor_ - begin, text);
  cursor_ = begin + text.size();
  return true;
}

line_editor::outcome line_editor::insert(std::string_view character) {
  if (text_.size() + character.size() > longest_) return outcome::full;
  text_.insert(cursor_, character);
  cursor_ += character.size();
  return outcome::going_on;
}

line_editor::outcome line_editor::recall(std::size_t number) {
  if (recalled_ == history_.size()) typed_ = text_;
  recalled_ = number;
  text_ = number == history_.size() ? typed_ : history_.line(number);
  cursor_ = text_.size();
  return outcome::going_on;
}

void line_editor::erase(std::size_t first, std::size_t end) {
  text_.erase(first, end - first);
  cursor_ = first;
}

}  // namespace zeb
