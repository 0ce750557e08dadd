// The console: keys, the screen and the line editor. It is up only when standard input and standard
// error are both terminals; everywhere else the program is a plain line program and the functions
// here answer "no key" and write nothing.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

class console_history;

/// Keys that are no single byte, as `wait_for_key` returns them. <esc> is byte 27, <enter> 10.
enum console_key : int {
  no_key = -1,
  key_up = 1000,
  key_down,
  key_left,
  key_right,
  key_home,
  key_end,
  key_page_up,
  key_page_down,
  key_delete,
  key_backspace,
  key_resize,  // the screen has a new size, already kept in `output`
  key_other,
};
constexpr int escape_key = 27;

struct console_settings {
  bool auto_view = false;  // the viewer is shown whenever the console asks for a line
  std::string break_text;  // `break /`: shown on <esc>, with a query; empty: none
};
extern console_settings console;

/// Takes the terminal over if there is one: sets `output.console_mode` and the screen's size, reads
/// the history. Changes nothing without terminals.
void start_console();
/// Gives the terminal back, cleared, and writes the history. May be called twice, or without
/// `start_console`; also runs at exit.
void end_console();

/// Is there a user to answer a question?
bool user_present();
/// Waits for a key; <esc> where there is no user, and when the terminal is gone.
int wait_for_key();
/// The key pressed, if any; `no_key` for none.
int poll_key();
/// Shows the question and takes keys until one, folded to lower case, is among `answers`; returns
/// it. Without a user nothing is shown and <esc> is returned: the caller takes the safe answer.
int ask_key(std::string_view question, std::string_view answers);

/// One line with its newline, edited by the user under the command's prompt, at most `size` bytes
/// with the terminator. The viewer comes first with `auto_view` on; with `echo [` prompt and text
/// go to the log. False when the terminal is gone.
bool read_console_line(char* text, int size);

/// What a look at the keyboard asks for.
enum class key_wish { nothing, interrupt, end_search };
/// What one key asks for, with the questions and the pause that belong to it.
key_wish wish_of_key(int key);
/// The poll of a running command: <esc>, "m" within a search, "p". Never waits unless the user
/// paused or is asked; the seconds of a pause are added to `process.command_start`.
key_wish poll_interrupt_keys();
/// Waits for a key: <esc> interrupts, another goes on.
key_wish wait_interrupt_key();

/// Writes to the console only, keeping account of the place: lines are cut and ended as those of
/// other output. In the plain program to the standard error; nothing in the background.
void write_console(std::string_view text);
/// Bytes to the standard error as they stand.
void write_terminal(std::string_view text);
/// Rings the bell; silent without a console.
void ring_bell();
/// Clears the screen; nothing without a console.
void clear_screen();

/// The terminal's control texts, empty without a console. Row and column count from 0.
std::string move_cursor_code(int row, int column);
std::string clear_screen_code();
std::string clear_to_line_end_code();

/// For its lifetime the terminal behaves as a child process expects it to.
class terminal_for_child {
 public:
  terminal_for_child();
  ~terminal_for_child();
  terminal_for_child(const terminal_for_child&) = delete;
  terminal_for_child& operator=(const terminal_for_child&) = delete;
};

/// The lines entered at the console.
console_history& entered_lines();

}  // namespace zeb
