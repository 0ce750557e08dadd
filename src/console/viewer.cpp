#include "console/viewer.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

#include "base/input_file.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "base/text_columns.h"
#include "console/console.h"
#include "console/keys.h"
#include "console/line_editor.h"
#include "console/screen.h"
#include "console/text_buffer.h"

namespace zeb {
namespace {

constexpr std::string_view viewer_help =
    "Use PG-UP, PG-DN, and ARROW KEYS; other options:\n\n\r"
    "    +       advance one line\n\r"
    "    -       go back one line\n\r"
    "    p       advance one page\n\r"
    "    o       go back one page\n\r"
    "    h       go to the beginning\n\r"
    "    e       go to the end\n\r"
    "    g       go to a line\n\r"
    "    :       search (nothing typed: again)\n\r"
    "    r  l    move right, left one column\n\r"
    "    R  L    move right, left half a screen (also 9, 8)\n\r"
    "    ESC     leave (also q, z)\n\n\r"
    "Press a key...";

constexpr std::size_t most_viewed = 1'000'000'000;  // bytes of a file

// What is viewed: numbered lines, from 0.
struct viewed_text {
  std::size_t count = 0;
  std::function<std::string(std::size_t)> line;
  std::string file_name;  // empty: the text buffer
};

// Tabs to blanks and other control characters to dots, so that a line takes the columns it seems
// to.
std::string on_one_line(const std::string& text) {
  std::string shown;
  std::size_t column = 0;
  for (std::size_t i = 0; i < text.size();) {
    std::int32_t code = 0;
    const std::size_t n = character_bytes(text, i, &code);
    if (text[i] == '\t') {
      const std::size_t blanks = 8 - column % 8;
      shown.append(blanks, ' ');
      column += blanks;
    } else if (code < 32 || (code >= 127 && code < 160)) {
      if (text[i] != '\r') shown += '.';
      column += text[i] != '\r';
    } else {
      shown.append(text, i, n);
      column += static_cast<std::size_t>(character_columns(std::string_view(text).substr(i, n)));
    }
    i += n;
  }
  return shown;
}

std::string folded(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

class viewer {
 public:
  viewer(const viewed_text& text, std::size_t lines_below) : text_(text) {
    to(static_cast<std::ptrdiff_t>(text_.count) - static_cast<std::ptrdiff_t>(lines_below) -
       rows());
  }
  void run() {
    draw();
    while (take(wait_for_key())) draw();
    clear_screen();
  }
  /// Lines after the last one on the screen.
  std::size_t lines_below() const {
    const std::size_t bottom = top_ + static_cast<std::size_t>(rows());
    return text_.count > bottom ? text_.count - bottom : 0;
  }

 private:
  // The screen less the header and the foot.
  static std::ptrdiff_t rows() { return std::max(screen.rows - 2, 1); }
  static std::size_t columns() { return static_cast<std::size_t>(std::max(screen.columns - 1, 1)); }

  void to(std::ptrdiff_t line) {
    const auto last =
        std::max<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(text_.count) - rows(), 0);
    top_ = static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(line, 0, last));
  }
  void by(std::ptrdiff_t lines) { to(static_cast<std::ptrdiff_t>(top_) + lines); }
  void shift_by(std::ptrdiff_t columns) {
    shift_ = static_cast<std::size_t>(
        std::clamp<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(shift_) + columns, 0, 2048));
  }

  bool take(int key);
  void draw() const;
  std::string header() const;
  void show_help() const;
  void go_to_line();
  void search();
  std::optional<std::string> typed(const std::string& prompt) const;

  const viewed_text& text_;
  std::size_t top_ = 0;    // first line on the screen
  std::size_t shift_ = 0;  // columns that are off the screen to the left
  std::string searched_;
  std::string note_;  // shown in the foot once
};

bool viewer::take(int key) {
  const auto half = static_cast<std::ptrdiff_t>(columns() / 2);
  note_.clear();
  switch (key) {
    case escape_key:
    case 'q':
    case 'z':
      return false;
    case '+':
    case key_down:
      by(1);
      break;
    case '-':
    case key_up:
      by(-1);
      break;
    case 'e':
    case key_end:
      to(static_cast<std::ptrdiff_t>(text_.count));
      break;
    case 'h':
    case key_home:
      to(0);
      break;
    case 'p':
    case ' ':
    case key_page_down:
      by(rows());
      break;
    case 'o':
    case key_page_up:
      by(-rows());
      break;
    case 'r':
    case key_right:
      shift_by(1);
      break;
    case 'l':
    case key_left:
      shift_by(-1);
      break;
    case 'R':
    case '9':
      shift_by(half);
      break;
    case 'L':
    case '8':
      shift_by(-half);
      break;
    case 'g':
      go_to_line();
      break;
    case ':':
      search();
      break;
    case key_resize:
      by(0);
      break;
    default:
      if (key > ' ' && key < 127) show_help();
  }
  return true;
}

std::string viewer::header() const {
  if (!text_.file_name.empty()) return text_of("** FILE: %s **", text_.file_name.c_str());
  if (text_.count == 0) return "Text buffer is empty";
  const std::size_t bottom = std::min(text_.count, top_ + static_cast<std::size_t>(rows()));
  return text_of("** TXT BUFFER, lines %i-%i of %i (ESC to exit) **", static_cast<int>(top_ + 1),
                 static_cast<int>(bottom), static_cast<int>(text_.count));
}

void viewer::draw() const {
  const std::string erase = clear_to_line_end_code();
  std::string drawn = move_cursor_code(0, 0);
  if (drawn.empty()) drawn = clear_screen_code();
  if (drawn.empty()) drawn = "\n\r";  // a terminal that only writes lines
  drawn += text_in_columns(header(), 0, columns());
  drawn += erase;
  for (std::ptrdiff_t row = 0; row < rows(); ++row) {
    drawn += "\n\r";
    const std::size_t number = top_ + static_cast<std::size_t>(row);
    if (number < text_.count) {
      drawn += text_in_columns(on_one_line(text_.line(number)), shift_, columns());
    }
    drawn += erase;
  }
  std::string foot = note_;
  if (foot.empty() && shift_ > 0) {
    foot = text_of("Lateral shift (screens): %.2f",
                   static_cast<double>(shift_) / static_cast<double>(screen.columns));
  }
  drawn += "\n\r";
  drawn += text_in_columns(foot, 0, columns());
  drawn += erase;
  write_terminal(drawn);
}

void viewer::show_help() const {
  write_terminal(clear_screen_code());
  write_terminal(viewer_help);
  wait_for_key();
}

// A line typed at the foot of the screen; nothing after <esc>.
std::optional<std::string> viewer::typed(const std::string& prompt) const {
  const console_history none;
  line_editor editor(none, columns() - std::min(columns() - 1, prompt.size()));
  for (;;) {
    write_terminal(move_cursor_code(screen.rows - 1, 0) + prompt + editor.text() +
                   clear_to_line_end_code());
    const int key = wait_for_key();
    if (key == escape_key || !user_present()) return std::nullopt;
    if (editor.take(key) == line_editor::outcome::entered) return editor.text();
  }
}

void viewer::go_to_line() {
  write_terminal(move_cursor_code(screen.rows - 2, 0));
  const std::optional<std::string> text = typed("\n\rGo to line: ");
  if (!text) return;
  const std::size_t number = whole_of<std::size_t>(*text).value_or(0);
  if (number == 0 || number > text_.count) {
    note_ = text_of("Lines go from 1 to %i", static_cast<int>(text_.count));
    return;
  }
  to(static_cast<std::ptrdiff_t>(number) - 1);
}

// The first line below the top of the screen that holds the text, then from the beginning; letters
// match in either case.
void viewer::search() {
  const std::optional<std::string> text = typed(":");
  if (!text) return;
  if (!text->empty()) searched_ = folded(*text);
  if (searched_.empty()) return;
  for (std::size_t i = 1; i <= text_.count; ++i) {
    const std::size_t number = (top_ + i) % text_.count;
    if (folded(text_.line(number)).find(searched_) == std::string::npos) continue;
    to(static_cast<std::ptrdiff_t>(number));
    note_ = text_of("Found in line %i", static_cast<int>(number + 1));
    return;
  }
  note_ = "Not found: " + searched_;
}

// After the viewer the screen shows the newest lines again, as if it had not been there.
void restore_screen() {
  clear_screen();
  const std::size_t lines = display_buffer.lines();
  const auto rows = static_cast<std::size_t>(std::max(screen.rows - 3, 1));
  for (std::size_t i = lines > rows ? lines - rows : 0; i < lines; ++i) {
    write_console(display_buffer.line(i) + "\n");
  }
  begin_page();
}

// Text of the file, or what stands against it. Devices and pipes may go on for ever, or wait for
// somebody who writes.
std::optional<std::string> contents_of(const std::string& name, std::string& refusal) {
  std::error_code fault;
  const auto kind = std::filesystem::status(name, fault).type();
  if (kind != std::filesystem::file_type::regular &&
      kind != std::filesystem::file_type::not_found) {
    refusal = "it isn't a regular file";
    return std::nullopt;
  }
  input_file file;
  std::string text;
  if (file.open(name, false)) {
    char piece[65536];
    while (const std::size_t n = text.size() > most_viewed ? 0 : file.read(piece, sizeof piece)) {
      text.append(piece, n);
    }
  }
  refusal = file.fault();
  if (text.size() > most_viewed) refusal = "it is larger than " + megabytes_text(most_viewed);
  if (!refusal.empty()) return std::nullopt;
  return text;
}

}  // namespace

void show_buffer_in_viewer() {
  if (!user_present()) return;
  const viewed_text text{display_buffer.lines(),
                         [](std::size_t number) { return display_buffer.line(number); }, ""};
  viewer window(text, display_buffer.view_offset);
  window.run();
  display_buffer.view_offset = window.lines_below();
  restore_screen();
}

bool show_file_in_viewer(const std::string& name, std::string& refusal) {
  const std::optional<std::string> contents = contents_of(name, refusal);
  if (!contents) return false;
  if (!user_present()) return true;
  std::vector<std::size_t> starts{0};
  for (std::size_t i = 0; i < contents->size(); ++i) {
    if ((*contents)[i] == '\n' && i + 1 < contents->size()) starts.push_back(i + 1);
  }
  if (contents->empty()) starts.clear();
  const auto line = [&](std::size_t number) {
    const std::size_t end = contents->find('\n', starts[number]);
    return contents->substr(starts[number], end == std::string::npos ? end : end - starts[number]);
  };
  const viewed_text text{starts.size(), line, name};
  viewer window(text, starts.size());
  window.run();
  restore_screen();
  return true;
}

}  // namespace zeb
