// The console: keys, the screen and the line editor. It is up only when standard input and standard
// error are both terminals; everywhere else the program is a plain line program and the functions
// here answer "no key" and write nothing.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zeb {

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
constexpr int key_escape = 27;

struct console_settings {
  bool auto_view = false;  // the viewer is shown whenever the console asks for a line
  std::string break_text;  // `break /`: shown on <esc>, with a query; empty: none
};
extern console_settings console;

/// Takes the terminal over if there is one: sets `output.console_mode` and the screen's size, reads
/// the history. False: no terminals, nothing changed.
bool start_console();
/// Gives the terminal back, cleared, and writes the history. May be called twice, or without
/// `start_console`; also runs at exit.
void end_console();

/// Waits for a key; `no_key` without a console or when the terminal is gone.
int wait_for_key();
/// A key if one is there.
int poll_key();
/// Shows the question and takes keys until one, folded to lower case, is among `answers`; returns
/// it. Without a console nothing is shown and `no_key` is returned: the caller takes the safe
/// answer.
int ask_key(std::string_view question, std::string_view answers);

/// Reads one line with the prompt, editing and history; the viewer first with `auto_view` on. The
/// text has no newline and at most `longest` bytes; with `echo [` prompt and text go to the log.
/// Empty optional: the terminal is gone.
std::optional<std::string> read_console_line(std::string_view prompt, std::size_t longest);

/// What a look at the keyboard asks for.
enum class key_wish { nothing, interrupt, end_search };
/// The poll of a running command: <esc>, "m" within a search, "p". Never waits unless the user
/// paused or is asked; the seconds of a pause are added to `process.command_start`.
key_wish poll_interrupt_keys();
/// Waits for a key: <esc> interrupts, another goes on.
key_wish wait_interrupt_key();

/// Writes to the console only, as it stands, "\n" becoming "\n\r" where the console needs it. In
/// the plain program to the standard error; nothing in the background.
void write_console(std::string_view text);
/// Rings the bell; silent without a console.
void ring_bell();
/// Clears the screen; nothing without a console.
void clear_screen();

}  // namespace zeb
