// The screen, or the pipe in its place: how lines of output reach it, cut at its edge, ended as the
// terminal needs it, counted for paging; and the one line of progress at its end.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace zeb {

struct screen_state {
  bool up = false;  // the screen library runs: lines end in "\n\r"
  int rows = 24;
  int columns = 80;
  bool cut_lines = false;  // lines end at the screen's edge: on a screen, or one given by `screen`
  int cursor_column = 0;   // where the console's line stands
  bool paging = false;     // `pause =`
  int page_lines = 0;      // lines since the last pause
  std::size_t progress_columns = 0;  // of the progress line; 0: nothing of it is on the screen
  int progress_rows = 0;             // of a table of progress, above the cursor's line
  int descriptor = 2;                // where all of this goes
  bool errors_apart = false;         // errors go to the standard error, the rest doesn't
};
extern screen_state screen;

/// Output goes to the standard output from here on, without anything that is for the eye only.
void show_on_standard_output();
/// For its lifetime what is shown is an error or a warning.
class errors_apart_scope {
 public:
  errors_apart_scope();
  ~errors_apart_scope();
  errors_apart_scope(const errors_apart_scope&) = delete;
  errors_apart_scope& operator=(const errors_apart_scope&) = delete;

 private:
  int former_;
};

void start_screen(int rows, int columns);
void end_screen();
void resize_screen(int rows, int columns);
/// Lines are cut from here on: only a screen that nobody sized leaves those of a pipe whole.
void cut_lines_at_edge(bool cut = true);
/// The cursor stands at the beginning of a line, and a new page begins.
void begin_page();
/// The cursor stands at the beginning of a line.
void begin_line();

/// Text to the standard error (or as said above) as lines, and the cursor's place kept.
void show_lines(std::string_view text);
/// Bytes to the same place as they stand. The process ends where they are the standard output and
/// can't be written.
void write_terminal(std::string_view text);

/// Puts the text in place of the progress line, as far as the screen is wide.
void show_progress_text(std::string_view text);
/// Puts a table in place of the progress line, or of the table before it.
void show_progress_rows(std::span<const std::string> rows);
/// Wipes the progress line or table, so that other text can take its place.
void hide_progress();

}  // namespace zeb
