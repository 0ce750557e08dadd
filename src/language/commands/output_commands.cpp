// `log`, `txtsize`, `svtxt`, `clbuffer`, `cls` and `view`: where output goes and how it is seen
// again.
#include <algorithm>
#include <string>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/open_files.h"
#include "base/safe_mode.h"
#include "console/console.h"
#include "console/line_editor.h"
#include "console/log.h"
#include "console/output.h"
#include "console/settings.h"
#include "console/text_buffer.h"
#include "console/viewer.h"
#include "language/commands/commands.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/toggles.h"

namespace zeb {
namespace {

void show_buffer_size() {
  report_line(text_of("Buffer (%i Kb) occupies ca. %i Kbytes on disk", display_buffer.kilobytes(),
                      static_cast<int>((display_buffer.written_bytes() + 999) / 1000)));
}

// Lets a user who asked to be asked keep what is in the buffer.
void announce_clearing(const char* what) {
  if (display_buffer.lines() == 0) return;
  if (settings.warn) {
    warning(what);
  } else {
    report_line(what);
  }
}

void resize_buffer(int kilobytes) {
  if (kilobytes == display_buffer.kilobytes()) return;
  announce_clearing("Resetting buffer size requires clearing it.");
  if (display_buffer.allot(kilobytes)) return;
  report_line(
      "Not enough memory to allocate display buffer.\nWill attempt to allocate a smaller buffer.");
  if (!display_buffer.allot(0)) {
    report_line("Can't allocate small buffer. Free memory and re-try.");
  }
}

void set_buffer_compression(bool on) {
  if (display_buffer.compression() != on) {
    announce_clearing("Changing buffer mode requires clearing it");
    display_buffer.set_compression(on);
  }
  show_toggle(on, "Buffer compression");
}

}  // namespace

void log_command() {
  no_timing();
  const bool append = accept_char('+');
  const bool quoted = skip_blanks_peek() == '"';
  if (read_file_name() == 0 && !append) {
    if (log_is_open()) {
      report_line("Log file:", log_file.name);
    } else {
      report_line("No Log file open");
    }
    return;
  }
  const std::string name(token());
  check_end();
  if (name == "/" && !append && !quoted) return close_log();
  if (!append && was_input_file(name))
    error_end("File", name, "was read in this run: a log would take its place");
  if (!open_log(name, append)) error_end("Cannot open file", name + log_file.file.cause());
  if (settings.report) report_line("Log file:", log_file.name);
}

void txtsize_command() {
  no_timing();
  const int sign = skip_blanks_peek();
  if (sign == '-' || sign == '+') {
    read_char();
    check_end();
    set_buffer_compression(sign == '+');
  } else {
    int kilobytes = 0;
    const bool resized = read_optional_int(&kilobytes);
    check_end();
    if (resized) resize_buffer(kilobytes);
  }
  show_buffer_size();
}

void svtxt_command() {
  const auto lines = static_cast<int>(std::min<std::size_t>(display_buffer.lines(), 2147483647));
  int first = 1;
  int last = lines;
  const bool given = read_optional_int(&first);
  if (given) {
    if (first < 0) error_end("Lines of the display buffer begin with 1, not", first);
    if (read_optional_int(&last) && last < first) {
      error_end("Line", last, "comes before line", first);
    }
    first = std::max(first, 1);
  }
  check_end();
  if (!log_is_open()) error_end("No log file open");
  if (given && (first > lines || last > lines)) error_end("Only", lines, "lines in display buffer");
  if (lines == 0) return report_line("Display buffer is empty: nothing saved");
  for (int number = first; number <= last; ++number) {
    write_log(display_buffer.line(static_cast<std::size_t>(number - 1)) + "\n");
  }
  flush_log();
  if (!log_is_open()) error_end("Lines of the display buffer aren't saved: the log is closed");
  report_line("Buffer: lines", first, last, "saved to", log_file.name);
}

void clbuffer_command() {
  no_timing();
  const bool history = accept_char('*');
  check_end();
  if (!history) return display_buffer.forget();
  report_line("command buffer will be cleared");
  entered_lines().clear();
}

void cls_command() {
  no_timing();
  check_end();
  clear_screen();
}

void view_command() {
  no_timing();
  const int sign = skip_blanks_peek();
  if (sign == '+' || sign == '-') {
    read_char();
    check_end();
    set_auto_view(sign == '+');
    show_toggle(settings.auto_view, "Auto-view");
    return;
  }
  if (read_file_name() > 0) {
    const std::string name(token());
    check_end();
    std::string refusal;
    if (!show_file_in_viewer(name, refusal)) {
      error_end("Can't open", name + cause_text(refusal));
    }
  } else {
    show_buffer_in_viewer();
  }
  if (!user_present()) report_line("The viewer needs a terminal: nothing shown");
}

}  // namespace zeb
