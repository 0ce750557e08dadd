// The terminal through the screen library. Only keys, sizes and control texts come from there; text
// goes to the standard error as it does without a console, so the library's own picture of the
// screen is never drawn after the start.
#include "console/console.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>

#include "base/input_file.h"
#include "base/output_file.h"
#include "base/process.h"
#include "base/signals.h"
#include "console/keys.h"
#include "console/line_editor.h"
#include "console/screen.h"

#define NCURSES_NOMACROS 1
#include <curses.h>

namespace zeb {

namespace {

struct terminal_state {
  SCREEN* screen = nullptr;
  // Keys are read through a pad: reading through a window would redraw the library's empty screen.
  WINDOW* keys = nullptr;
  std::deque<int> typed_ahead;
  winsize size{};     // as the system last told it
  double looked = 0;  // when the keyboard was last polled: wall clock, seconds
  bool gone = false;  // reading keys fails
  console_history history;
};
terminal_state terminal;

constexpr double seconds_between_looks = 0.03;
constexpr int escape_delay_milliseconds = 25;
constexpr int wait_milliseconds = 250;  // a new size of the screen is noticed within this time

// Empty where the user has no home folder: then lines are forgotten at the end.
std::string history_file() {
  const char* home = std::getenv("HOME");  // NOLINT(concurrency-mt-unsafe)
  if (!home || !*home) return {};
  return std::string(home) + "/.zeb_history";
}

void read_history() {
  input_file file;
  if (file.open(history_file(), false)) terminal.history.read_file_text(file.rest());
}

// A process that is killed meanwhile leaves the old file whole; without a history work goes on.
void write_history() {
  const std::string name = history_file();
  output_file file;
  if (name.empty() || !file.create(name)) return;
  file.put(terminal.history.file_text());
  file.close();
}

// Follows the terminal's size; a size set by `screen` holds until the terminal changes.
bool follow_size() {
  winsize now{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &now) != 0 || now.ws_row == 0 || now.ws_col == 0)
    return false;
  if (now.ws_row == terminal.size.ws_row && now.ws_col == terminal.size.ws_col) return false;
  terminal.size = now;
  resize_screen(now.ws_row, now.ws_col);
  return true;
}

int key_from_library(int key) {
  switch (key) {
    case KEY_UP:
      return key_up;
    case KEY_DOWN:
      return key_down;
    case KEY_LEFT:
      return key_left;
    case KEY_RIGHT:
      return key_right;
    case KEY_HOME:
      return key_home;
    case KEY_END:
      return key_end;
    case KEY_PPAGE:
      return key_page_up;
    case KEY_NPAGE:
      return key_page_down;
    case KEY_DC:
      return key_delete;
    case KEY_BACKSPACE:
      return key_backspace;
    case KEY_ENTER:
      return '\n';
    case KEY_RESIZE:
      return key_resize;
    default:
      return key >= KEY_MIN ? static_cast<int>(key_other) : key;
  }
}

// One key; waits at most so many milliseconds.
int library_key(int milliseconds) {
  wtimeout(terminal.keys, milliseconds);
  const int key = wgetch(terminal.keys);
  if (key == ERR) return no_key;
  return key_from_library(key);
}

bool input_is_gone() {
  pollfd descriptor{STDIN_FILENO, POLLIN, 0};
  if (poll(&descriptor, 1, 0) < 0) return errno != EINTR;
  return (descriptor.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}

// As `wait_for_key`, but tells Ctrl-C from <esc>.
int next_key() {
  if (!user_present()) return escape_key;
  hide_progress();
  if (!terminal.typed_ahead.empty()) {
    const int key = terminal.typed_ahead.front();
    terminal.typed_ahead.pop_front();
    return key;
  }
  // The library learns of a new size only when the signal interrupts its read, so the size is
  // looked at here.
  for (;;) {
    if (take_interrupt_signal()) return key_interrupt;
    if (noted_signal() != 0) terminal.gone = true;
    if (terminal.gone) return escape_key;
    if (follow_size()) return key_resize;
    const int key = library_key(wait_milliseconds);
    if (key != no_key && key != key_resize) return key;
    if (key == no_key && input_is_gone()) terminal.gone = true;
  }
}

// Without the pauses ("$<50>") that old terminals needed.
std::string library_text(const char* text) {
  // Both mean that the terminal has no such text.
  if (!text || reinterpret_cast<std::intptr_t>(text) == -1) return {};
  std::string code(text);
  for (std::size_t at = code.find("$<"); at != std::string::npos; at = code.find("$<", at)) {
    const std::size_t end = code.find('>', at);
    code.erase(at, end == std::string::npos ? end : end - at + 1);
  }
  return code;
}

// The terminal is given back without being cleared when the program ends in any other way than
// through `end_console`.
void leave_terminal() {
  if (!screen.up) return;
  end_screen();
  endwin();
}

}  // namespace

console_history& entered_lines() { return terminal.history; }

void start_console() {
  if (screen.up || !isatty(STDIN_FILENO) || !isatty(STDERR_FILENO)) return;
  use_env(true);
  terminal.screen = newterm(nullptr, stderr, stdin);
  if (!terminal.screen) return;  // a terminal that the library doesn't know: a plain line program
  set_escdelay(escape_delay_milliseconds);
  cbreak();
  noecho();
  terminal.keys = newpad(1, 1);
  keypad(terminal.keys, true);
  meta(terminal.keys, true);
  // Clears the screen, once; one that can't be cleared would be filled with blanks.
  if (!library_text(tigetstr("clear")).empty()) refresh();
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &terminal.size) != 0) terminal.size = {};
  start_screen(LINES, COLS);
  read_history();
  std::atexit(leave_terminal);
}

void end_console() {
  if (!screen.up) return;
  hide_progress();
  write_history();
  const std::string clear = clear_screen_code();
  leave_terminal();
  write_terminal(clear);
}

bool user_present() { return screen.up && !process.background && !terminal.gone; }

int wait_for_key() {
  const int key = next_key();
  return key == key_interrupt ? escape_key : key;
}

int poll_key() {
  if (!user_present()) return no_key;
  return library_key(0);
}

bool more_keys_wait() {
  if (!terminal.typed_ahead.empty()) return true;
  pollfd descriptor{STDIN_FILENO, POLLIN, 0};
  return user_present() && poll(&descriptor, 1, 0) > 0;
}

int ask_key(std::string_view question, std::string_view answers) {
  if (!user_present()) return escape_key;
  write_console(question);
  for (;;) {
    const int key = next_key();
    if (key == key_interrupt) return escape_key;
    if (key < 0 || key > 127) continue;
    const int folded = std::tolower(key);
    if (answers.find(static_cast<char>(folded)) != std::string_view::npos) return folded;
    if (terminal.gone) return escape_key;
  }
}

void write_console(std::string_view text) {
  if (process.background) return;
  hide_progress();
  show_lines(text);
}

void ring_bell() {
  if (user_present()) write_terminal("\a");
}

void clear_screen() {
  if (!user_present()) return;
  write_terminal(clear_screen_code());
  begin_page();
}

std::string clear_screen_code() {
  return screen.up ? library_text(tigetstr("clear")) : std::string();
}

std::string clear_to_line_end_code() {
  return screen.up ? library_text(tigetstr("el")) : std::string();
}

std::string move_cursor_code(int row, int column) {
  const std::string code = screen.up ? library_text(tigetstr("cup")) : std::string();
  if (code.empty()) return {};
  return library_text(tparm(code.c_str(), row, column, 0, 0, 0, 0, 0, 0, 0));
}

terminal_for_child::terminal_for_child() {
  if (!screen.up) return;
  hide_progress();
  reset_shell_mode();
}

terminal_for_child::~terminal_for_child() {
  if (!screen.up) return;
  reset_prog_mode();
  keypad(terminal.keys, true);
  begin_line();
}

std::vector<int> keys_pressed() {
  if (!user_present()) return {};
  const double now = wall_clock();
  if (now - terminal.looked < seconds_between_looks && now >= terminal.looked) return {};
  terminal.looked = now;
  follow_size();
  std::vector<int> keys;
  for (int key = poll_key(); key != no_key; key = poll_key()) {
    if (key != key_resize) keys.push_back(key);
    if (key == escape_key) break;
  }
  return keys;
}

void keep_typed_ahead(std::span<const int> keys) {
  terminal.typed_ahead.insert(terminal.typed_ahead.end(), keys.begin(), keys.end());
}

void forget_typed_ahead() { terminal.typed_ahead.clear(); }

}  // namespace zeb
