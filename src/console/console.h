// The console: the terminal that is taken over, and its keys. It is up only when standard input and
// standard error are both terminals; everywhere else the program is a plain line program and the
// functions here answer "no key" and write nothing.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

class console_history;

/// Takes the terminal over if there is one: starts the screen in its size, reads the history.
/// Changes nothing without terminals.
void start_console();
/// Gives the terminal back, cleared, and writes the history. May be called twice, or without
/// `start_console`; also runs at exit.
void end_console();

/// Is there a user to answer a question?
bool user_present();
/// Waits for a key, and takes Ctrl-C for <esc>; <esc> where there is no user, and when the terminal
/// is gone.
int wait_for_key();
/// The key pressed, if any; `no_key` for none.
int poll_key();
/// Are keys waiting that were typed or pasted faster than they were read?
bool more_keys_wait();
/// Shows the question and takes keys until one, folded to lower case, is among `answers`; returns
/// it. Without a user nothing is shown and <esc> is returned, as after Ctrl-C: the caller takes the
/// safe answer.
int ask_key(std::string_view question, std::string_view answers);

/// The keys pressed since the last look, up to an <esc>; none where the last look was a moment ago.
std::vector<int> keys_pressed();
/// Text typed ahead while a command runs is for the line editor.
void keep_typed_ahead(std::span<const int> keys);
void forget_typed_ahead();

/// Writes to the console only, keeping account of the place: lines are cut and ended as those of
/// other output. In the plain program to the standard error; nothing in the background.
void write_console(std::string_view text);
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
