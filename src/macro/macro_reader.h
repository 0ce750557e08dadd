// The character reader of the macro language: a filter on the plain reader that expands variables,
// strings, loop counters and run-file arguments, and re-reads the bodies of loops.
#pragma once

#include <string>
#include <string_view>

#include "language/input.h"

namespace zeb {

/// What the reader leaves alone for a while.
struct macro_reading {
  bool no_expansion = false;  // all characters plain
  bool no_quotes = false;     // quotes plain (within a number or name)
  bool no_strings = false;    // "$" plain (behind the head of what takes a string)
};
extern macro_reading macro_reading_flags;

/// Sets a flag of `macro_reading_flags` for its lifetime. Errors clear all flags before they
/// unwind, so the former value is kept.
class reading_flag {
 public:
  explicit reading_flag(bool macro_reading::*flag, bool value = true)
      : flag_(flag), before_(macro_reading_flags.*flag) {
    macro_reading_flags.*flag_ = value;
  }
  ~reading_flag() { macro_reading_flags.*flag_ = before_; }
  reading_flag(const reading_flag&) = delete;
  reading_flag& operator=(const reading_flag&) = delete;

 private:
  bool macro_reading::*flag_;
  bool before_;
};

/// Makes commas plain characters for its lifetime, where they would end the command.
class literal_commas {
 public:
  literal_commas() : before_(input.literal_comma) { input.literal_comma = true; }
  ~literal_commas() { input.literal_comma = before_; }
  literal_commas(const literal_commas&) = delete;
  literal_commas& operator=(const literal_commas&) = delete;

 private:
  bool before_;
};

/// Installs and removes the reader, the value reader and the hooks of the input stack.
void connect_macro_reader();
void disconnect_macro_reader();
/// Forgets pending expansions and flags, after an error.
void reset_macro_reader();

int macro_read_char();
void macro_unread_char();
/// Next character without any expansion.
int read_raw_char();
int peek_raw_char();

/// Makes the reader go on with `text` before the rest of the input. At most 8,500 bytes. The text
/// stands for itself, but for its last `expandable_tail` bytes.
void insert_text(std::string_view text, std::size_t expandable_tail = 0);

/// Leaves the expansion that is being read, if nothing of it is left but blanks, so that the
/// position of the reader lies in the outer text.
void close_expansion();

/// Where the reader stands in the text that holds the expansion being read, or the text itself.
const char* outer_position();
/// The text of the innermost loop is being read, and nothing of it is left.
bool loop_text_ended();

/// Moves the reading to the end of the text of the innermost loop, so that its next round begins.
void skip_to_loop_end();
/// Adds the step to the innermost loop's counter and goes back to its start, or leaves the loop.
void advance_loop();

}  // namespace zeb
