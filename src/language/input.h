// The input stack and the character reader: all that the program reads comes through here.
#pragma once

#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace zeb {

constexpr int frame_text_size = 4128;  // bytes of a frame's text, with the terminator
constexpr int refill_size = 4096;      // most bytes read at a time
constexpr int kept_behind = 32;        // bytes kept in front of a refilled text, for unreading

/// One open input.
struct input_frame {
  std::FILE* stream = nullptr;  // null: only a string
  bool is_terminal = false;
  bool at_end = false;                 // the text has run out
  char* saved_position = nullptr;      // read position of the frame below, while this one is on top
  std::vector<std::string> arguments;  // `%1` and so on
  bool has_arguments = false;
  char buffer[kept_behind + frame_text_size + 8] = {};
  const char* typed_line = nullptr;  // where the line typed last begins; null: nothing was typed
  char* text = buffer;               // start of the text: nothing before it can be unread
  char name[160] = {};
  int line_number = 0;  // newlines read
};

struct input_state {
  // One for each level up to the deepest reached; at most `mxproc` + 1.
  std::vector<std::unique_ptr<input_frame>> frames;
  int mxproc = 10;
  int top = 0;                    // index of the frame being read; 0 is the console or command line
  char* read_position = nullptr;  // in the text of the top frame
  bool literal_comma = false;     // `quote` reads
  std::string run_directory;      // `rdir`, ends in "/"
  int error_target_level = -1;    // `goto [`; -1 none
  std::string error_target_file, error_target_label;
  bool jump_pending = false;     // the main loop is to run the jump to the error target
  bool in_command_head = false;  // blanks between a command word and its arguments are skipped
  // Process arguments that didn't fit in the level-0 text yet.
  std::string argument_text;
  std::size_t argument_position = 0;
  bool arguments_closed = false;  // the ";" behind them has been supplied
};
extern input_state input;

/// While it lives, a command may take commas as parts of its text at the console too; afterwards
/// they are read as before.
class comma_reading {
 public:
  explicit comma_reading(bool literal = false) { set_literal(literal); }
  ~comma_reading() { input.literal_comma = former_; }
  comma_reading(const comma_reading&) = delete;
  comma_reading& operator=(const comma_reading&) = delete;
  void set_literal(bool literal) const { input.literal_comma = literal || former_; }

 private:
  const bool former_ = input.literal_comma;
};

/// What the macro layer does when the stack changes. Null while the language is off.
struct macro_hook_table {
  void (*frame_about_to_be_pushed)() = nullptr;
  void (*frame_pushed)() = nullptr;
  void (*frame_popped)() = nullptr;
  bool (*command_failed)() = nullptr;    // error or interrupt: blocks and loops end; true if the
                                         // reader was moved behind a loop
  void (*show_error_place)() = nullptr;  // replaces the plain place and caret of an error
  int (*loop_level)() = nullptr;         // nesting of macro loops
  void (*run_pending_jump)() = nullptr;  // goes to the target of `goto [`
  bool (*running_call)() = nullptr;      // no "Again reading from" for it
};
extern macro_hook_table macro_hooks;

/// The frame being read.
inline input_frame& top_frame() { return *input.frames[static_cast<std::size_t>(input.top)]; }
/// Makes level 0: the text of the process arguments, or the standard input where there are none.
/// `name` is shown for it.
void start_input(int mxproc, std::string argument_text, const std::string& name);
/// Sets how many files may be open at a time; not below the number that are.
void set_input_depth(int mxproc);

/// The two replaceable entries through which every handler takes characters. `read_char` returns
/// the next character as a non-negative integer and never fails: an ended input gives "\n;".
extern int (*read_char)();
/// Steps back by one character, unless at the start of the frame's buffer.
extern void (*unread_char)();

/// Goes on reading at `position` of whatever text: for filters on the plain reader.
inline void read_on_at(const char* position) { input.read_position = const_cast<char*>(position); }

/// The same in the frame at `level`: at once, or when the frames above it have ended.
void read_on_at(const char* position, int level);

/// The plain reader.
int plain_read_char();
void plain_unread_char();

/// Opens the file and makes it the top frame. Errors: nested too deep, in use, can't open.
void push_file(const std::string& name, std::span<const std::string> arguments,
               bool may_recurse = false);
/// Makes `text` (under 4,128 bytes) the top frame, under the given display name.
void push_string(std::string_view text, const char* name);
void pop_frame();
/// Reads the top frame's file again from its start.
void rewind_top_frame();
/// Pops down to level 0. Keeps a jump to the error target pending, and drops what is left of the
/// console line or of the failed command of the process arguments.
void pop_all();
/// Pops the frames above `level` whose text has run out. Returns true while `level` itself has
/// text.
bool has_text_at(int level);
/// Sets and forgets the label that an error or break in this frame or above it goes to.
void set_error_target(const std::string& file, const std::string& label);
void clear_error_target();
/// Is `name` the file being read?
bool is_current_file(std::string_view name);
/// The top frame has run out of text: nothing but the supplied "\n;", or a part of it, is left.
bool input_ended();
/// Level 0 has run out of text.
bool level_zero_ended();

}  // namespace zeb
