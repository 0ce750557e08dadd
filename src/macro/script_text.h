// The text that the language reads, character by character, before anything in it is expanded. What
// was put in by an expansion comes first, then the innermost body, then the input
// itself.
#pragma once

#include <string>
#include <string_view>

#include "language/input.h"

namespace zeb {

/// What the reader leaves alone for a while. Changed through `reading_flag` only.
struct macro_reading {
  bool no_expansion = false;        // all characters plain
  bool no_quotes = false;           // quotes plain (within a number or name)
  bool single_quotes_only = false;  // nothing else is expanded, but arguments of the file
  bool no_strings = false;          // "$" plain (after the head of what takes a string)
  bool exact_numbers = false;       // variables have all their digits, not those of the format
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

/// The same as `read_raw_char` where a text may end, a command may end or a line is to be counted.
int read_raw_boundary();
/// Next character without any expansion; the next one left unread; one step back.
inline int read_raw_char() {
  // Whatever text it is: only its end, commas at level 0 and the count of lines need a closer look.
  const char plain = *input.read_position;
  if (plain == 0 || plain == ',' || plain == '\n') return read_raw_boundary();
  read_on_at(input.read_position + 1);
  return static_cast<unsigned char>(plain);
}
int peek_raw_char();
void unread_raw_char();

/// Makes the reader go on with `text` before the rest of the input. At most 8,500 bytes. The text
/// stands for itself, but for its last `expandable_tail` bytes.
void insert_text(std::string_view text, std::size_t expandable_tail = 0);
/// The character read last came from text that stands for itself.
bool last_char_was_plain();
/// Leaves the expansion that is being read, so that the position of the reader lies in the outer
/// text.
void close_expansion();
/// The same, with what was left of the expansion.
std::string take_expansion();
/// Forgets the expansion where the position has been moved elsewhere already.
void forget_expansion();
/// Forgets the expansion and all flags, after an error.
void reset_script_text();

/// Where the reader stands in the text that holds the expansion being read, or the text itself.
const char* outer_position();
/// The text of the innermost body is being read, and nothing of it is left.
bool body_text_ended();
/// Moves the reading to the end of the text of the innermost body, so that its next round begins.
void skip_to_body_end();

}  // namespace zeb
