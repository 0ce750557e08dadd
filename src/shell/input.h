// The input stack and the character reader: all that the program reads comes through here.
#pragma once

#include <cstdio>
#include <span>
#include <string>
#include <vector>

namespace zeb {

constexpr int frame_text_size = 4128;  // bytes of a frame's buffer, with the terminator

/// One open input.
struct input_frame {
  std::FILE* stream = nullptr;  // null: only a string
  bool is_terminal = false;
  bool at_end = false;  // the text has run out
  const char* saved_position =
      nullptr;                         // read position of the frame below, while this one is on top
  std::vector<std::string> arguments;  // `%1` and so on
  bool has_arguments = false;
  char buffer[frame_text_size] = {};
  char name[160] = {};
  int line_number = 0;  // newlines read
  // What the macro layer keeps for the file: see macro/.
  int loop_level = 0;
  int variable_mark = 0;
};

struct input_state {
  std::vector<input_frame*> frames;  // `mxproc` + 1 of them
  int mxproc = 10;
  int top = 0;                    // index of the frame being read; 0 is the console or command line
  char* read_position = nullptr;  // in the text of the top frame
  bool literal_comma = false;     // `quote` reads
  std::string run_directory;      // `rdir`, ends in "/"
  int error_target_level = -1;    // `goto [`; -1 none
  std::string error_target_file, error_target_label;
  bool jump_pending = false;  // the main loop is to run the jump to the error target
};
extern input_state input;

/// The two replaceable entries through which every handler takes characters. `read_char` returns
/// the next character as a non-negative integer and never fails: an ended input gives "\n;".
extern int (*read_char)();
/// Steps back by one character, unless at the start of the frame's buffer.
extern void (*unread_char)();

/// The plain reader.
int plain_read_char();
void plain_unread_char();

/// Opens the file and makes it the top frame. Errors: nested too deep, in use, can't open.
void push_file(const std::string& name, std::span<const std::string> arguments,
               bool may_recurse = false);
/// Makes `text` (under 4,128 bytes) the top frame, under the given display name.
void push_string(std::string_view text, const char* name);
void pop_frame();
/// Pops down to level 0.
void pop_all();
/// The top frame has run out of text.
bool input_ended();
/// Level 0 has run out of text.
bool level_zero_ended();

}  // namespace zeb
