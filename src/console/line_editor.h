// One console line under the user's keys, and the lines entered before. Knows nothing of screens.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

namespace zeb {

/// Lines entered at the console, oldest first: at most 56, of at most 255 bytes each.
class console_history {
 public:
  /// Empty lines and repetitions of the newest one aren't kept; longer lines are cut.
  void add(std::string_view line);
  void clear() { lines_.clear(); }
  std::size_t size() const { return lines_.size(); }
  /// 0 is the oldest.
  const std::string& line(std::size_t number) const { return lines_[number]; }
  /// The file's text: the number of lines and a blank, then each line followed by byte 1.
  std::string file_text() const;
  /// Takes what such a text holds; whatever is malformed is left out.
  void read_file_text(std::string_view text);

 private:
  std::deque<std::string> lines_;
};

class line_editor {
 public:
  /// `longest` is in bytes.
  line_editor(const console_history& history, std::size_t longest)
      : history_(history), longest_(longest), recalled_(history.size()) {}
  enum class outcome { going_on, refused, full, entered };
  /// Takes one key (see console_key); bytes above 127 are collected to whole characters.
  outcome take(int key);
  const std::string& text() const { return text_; }
  /// Byte at which the next character goes in.
  std::size_t cursor() const { return cursor_; }
  /// Between the bytes of a character.
  bool in_character() const { return !partial_.empty(); }
  /// The keys are looked for in the history, from <ctrl-R> on: the line shown is the newest that
  /// holds what was typed. `searched` is that text.
  bool is_searching() const { return searching_; }
  const std::string& searched() const { return searched_; }
  /// What stands from byte `begin` to the cursor becomes `text`; false where it doesn't fit.
  bool replace_before_cursor(std::size_t begin, std::string_view text);

 private:
  outcome take_in_line(int key);
  outcome insert(std::string_view character);
  outcome take_in_search(int key);
  outcome search_on();
  outcome find(const std::string& wanted, std::size_t newest);
  outcome recall(std::size_t number);
  void erase(std::size_t first, std::size_t end);
  void move(int key);

  const console_history& history_;
  std::size_t longest_;
  std::string text_;
  std::size_t cursor_ = 0;
  std::size_t recalled_;  // line of the history that is shown; its size: the line being typed
  std::string typed_;     // the line being typed, kept while another is shown
  std::string partial_;   // first bytes of a character
  bool searching_ = false;
  std::string searched_;
};

}  // namespace zeb
