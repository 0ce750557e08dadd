// Reading one line at the console.
#pragma once

namespace zeb {

/// One line with its newline, edited by the user under the command's prompt, at most `size` bytes
/// with the terminator. The viewer comes first with `auto_view` on; with `echo [` prompt and text
/// go to the log. False when the terminal is gone.
bool read_console_line(char* text, int size);

}  // namespace zeb
