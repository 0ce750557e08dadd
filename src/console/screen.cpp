#include "console/screen.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <string>

#include "base/interrupts.h"
#include "base/process.h"
#include "base/text_columns.h"

namespace zeb {

screen_state screen;

namespace {

constexpr std::string_view page_cue = "-- more --";

// Takes no memory: what hides a line may not fail.
void blank_out(std::size_t columns) {
  constexpr std::string_view blanks = "                                        ";
  write_terminal("\r");
  for (; columns > blanks.size(); columns -= blanks.size()) write_terminal(blanks);
  write_terminal(blanks.substr(0, columns));
  write_terminal("\r");
}

// With `pause =`: a full screen waits for a key.
void count_line() {
  if (!screen.up || !screen.paging) return;
  if (++screen.page_lines < screen.rows - 2) return;
  screen.page_lines = 0;
  struct cue {
    cue() { write_terminal(page_cue); }
    ~cue() { blank_out(page_cue.size()); }
  };
  const cue shown;
  wait_for_go_ahead();
}

// Who reads the output of a batch run must not take a part of it for all.
[[noreturn]] void output_is_lost() {
  std::perror("zeb: can't write the output");
  screen.descriptor = STDERR_FILENO;
  end_process(255);
}

bool fits(int columns) {
  return !screen.cut_lines || screen.cursor_column + columns <= screen.columns - 1;
}

// Everything up to the first newline, which is consumed too.
std::string next_line(std::string_view& text, bool& ended) {
  std::string shown;
  ended = false;
  while (!text.empty() && !ended) {
    const std::size_t n = character_bytes(text, 0);
    const std::string_view character = text.substr(0, n);
    text.remove_prefix(n);
    int columns = 0;
    switch (character[0]) {
      case '\n':
        shown += screen.up ? "\n\r" : "\n";
        screen.cursor_column = 0;
        ended = true;
        continue;
      case '\r':
        screen.cursor_column = 0;
        break;
      case '\b':
        columns = screen.cursor_column > 0 ? -1 : 0;
        break;
      case '\a':
        if (!screen.up) continue;
        break;
      case '\t':
        columns = 8 - screen.cursor_column % 8;
        break;
      default:
        columns = character_columns(character);
    }
    if (columns > 0 && !fits(columns)) continue;
    shown += character;
    screen.cursor_column += columns;
  }
  return shown;
}

}  // namespace

void show_lines(std::string_view text) {
  std::string waiting;  // lines go out together unless paging may stop between them
  while (!text.empty()) {
    bool ended = false;
    waiting += next_line(text, ended);
    if (ended && screen.paging) {
      write_terminal(waiting);
      waiting.clear();
      count_line();
    }
  }
  write_terminal(waiting);
}

void start_screen(int rows, int columns) {
  resize_screen(rows, columns);
  screen.cut_lines = true;
  screen.up = true;
  screen.cursor_column = 0;
}

void end_screen() { screen.up = false; }

void resize_screen(int rows, int columns) {
  screen.rows = rows;
  screen.columns = columns;
}

void cut_lines_at_edge(bool cut) { screen.cut_lines = cut; }

void begin_line() { screen.cursor_column = 0; }

void begin_page() {
  begin_line();
  screen.page_lines = 0;
}

void write_terminal(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(screen.descriptor, text.data(), text.size());
    if (written > 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd descriptor{screen.descriptor, POLLOUT, 0};
      poll(&descriptor, 1, -1);
    } else if (errno != EINTR) {  // a signal, as that of a new size, mustn't lose text
      if (screen.descriptor == STDOUT_FILENO) output_is_lost();
      return;
    }
  }
}

void show_on_standard_output() {
  screen.descriptor = STDOUT_FILENO;
  screen.errors_apart = true;
}

errors_apart_scope::errors_apart_scope() : former_(screen.descriptor) {
  if (screen.errors_apart) screen.descriptor = STDERR_FILENO;
}
errors_apart_scope::~errors_apart_scope() { screen.descriptor = former_; }

void show_progress_text(std::string_view text) {
  const auto width = static_cast<std::size_t>(std::max(screen.columns - 1, 1));
  const std::string shown(text_in_columns(text, 0, width));
  const auto columns = static_cast<std::size_t>(text_columns(shown));
  const std::size_t rest = std::max(screen.progress_columns, columns) - columns;
  write_terminal("\r" + shown + std::string(rest, ' '));
  screen.progress_columns = columns;
}

void show_progress_rows(std::span<const std::string> rows) {
  hide_progress();
  const auto width = static_cast<std::size_t>(std::max(screen.columns - 1, 1));
  for (const std::string& row : rows)
    write_terminal(std::string(text_in_columns(row, 0, width)) + "\r\n");
  screen.progress_rows = static_cast<int>(rows.size());
}

void hide_progress() {
  if (screen.progress_rows > 0) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "\r\033[%dA\033[J", screen.progress_rows);
    write_terminal(text.data());
    screen.progress_rows = 0;
  }
  if (screen.progress_columns == 0) return;
  blank_out(screen.progress_columns);
  screen.progress_columns = 0;
}

}  // namespace zeb
