// The input stack and the character reader: all that the program reads comes through here.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/input_file.h"
#include "language/hooks.h"

namespace zeb {

constexpr int frame_text_size = 4128;  // bytes of a frame's text, with the terminator
constexpr int refill_size = 4096;      // most bytes read at a time
constexpr int kept_behind = 32;        // bytes kept before a refilled text, for unreading

/// One open input.
struct input_frame {
  input_file file;  // not open: only a string
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
  bool from_arguments = false;   // level 0 holds the process arguments
  // Process arguments that didn't fit in the level-0 text yet.
  std::string argument_text;
  std::size_t argument_position = 0;
  bool arguments_closed = false;  // the ";" after them has been supplied
  bool plain_commas = false;      // level 0 is a text in which commas don't end commands
};
extern input_state input;

/// While it lives commas may be made parts of the text at level 0 too, where they end a command
/// otherwise.
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

inline bool commas_end_commands() {
  return input.top == 0 && !input.literal_comma && !input.plain_commas;
}

/// The frame being read.
inline input_frame& top_frame() { return *input.frames[static_cast<std::size_t>(input.top)]; }
/// Makes level 0: the text of the process arguments, or the standard input where there are none.
/// `name` is shown for it.
void start_input(int mxproc, std::string argument_text, const std::string& name);
/// Level 0 is `text` from now on, read like a file; all other inputs are closed.
void restart_level_zero(std::string text);
/// Sets how many files may be open at a time; not below the number that are.
void set_input_depth(int mxproc);

/// The two replaceable entries through which every handler takes characters.
struct character_reader {
  int (*read)();
  void (*unread)();
};
extern character_reader char_source;

/// The next character as a non-negative integer. Never fails: an ended input gives "\n;".
inline int read_char() { return char_source.read(); }
/// Steps back by one character, unless at the start of the frame's buffer.
inline void unread_char() { char_source.unread(); }
/// The next character as it stands, left unread (blanks aren't skipped).
int peek_char();

/// Goes on reading at `position` of whatever text: for filters on the plain reader.
inline void read_on_at(const char* position) { input.read_position = const_cast<char*>(position); }

/// The same in the frame at `level`: at once, or when the frames above it have ended.
void read_on_at(const char* position, int level);

/// Reads what is left of a comment, of which "/*" has been read. Error where it has no end.
void skip_rest_of_comment();

/// The plain reader.
int plain_read_char();
void plain_unread_char();

/// Another reader takes its place while this lives.
class reader_scope {
 public:
  explicit reader_scope(const character_reader& other) { char_source = other; }
  ~reader_scope() { char_source = former_; }
  reader_scope(const reader_scope&) = delete;
  reader_scope& operator=(const reader_scope&) = delete;
  const character_reader& former() const { return former_; }

 private:
  const character_reader former_ = char_source;
};

/// Errors where a file of that name can't be made the top frame: nested too deep, in use.
void check_pushing(const std::string& name, bool may_recurse = false);
/// The text of this process that stands for a file of that name; null: none.
const std::string* own_text(const std::string& name);
/// The file, open for reading; "-" is the standard input, unless that holds the commands. Errors:
/// can't open.
input_file opened_file(const std::string& name);
/// Refuses text that nothing here can read.
void check_encoding(input_file& file);
/// Opens the file and makes it the top frame. Errors: nested too deep, in use, can't open.
void push_file(const std::string& name, std::span<const std::string> arguments,
               bool may_recurse = false);
/// The same for a file that is open.
void push_opened_file(input_file file, std::span<const std::string> arguments);
/// Makes `text` (under 4,128 bytes) the top frame, under the given display name.
void push_string(std::string_view text, const char* name);
void pop_frame();
/// Reads the top frame's file again from its start; an error for what can be read once only.
void rewind_top_frame();
/// Pops down to level 0. Keeps a jump to the error target pending, and drops what is left of the
/// console line or of all the process arguments; in the background, of the failed command only.
void pop_all();
/// Pops the frames above `level` whose text has run out. Returns true while `level` itself has
/// text.
bool has_text_at(int level);
/// Sets and forgets the label that an error or break in this frame or above it goes to.
void set_error_target(const std::string& file, const std::string& label);
void clear_error_target();
/// In the background: makes the instructions that the user left meanwhile the top frame; false
/// where there are none.
bool take_up_execute_file();
/// After an error: nothing that a handler wanted of the reader holds any more.
void plain_reading_again();
/// Skips blanks between a command's word and its arguments, and takes a "?" there.
bool accept_question_mark();
void set_run_directory(const std::string& path);
/// Runs the jump that an error left pending.
void run_pending_jump();
/// Where the text to show of a frame begins: the line for text that was typed, else all there is.
const char* start_of_shown_text(const input_frame& frame);
/// Puts the macro language in the place of the plain one; `{}` takes it away.
void set_macro_layer(const macro_layer& layer);
/// Is `name` the file being read?
bool is_current_file(std::string_view name);
/// The top frame has run out of text: nothing but the supplied "\n;", or a part of it, is left.
bool input_ended();
/// Level 0 has run out of text.
bool level_zero_ended();

}  // namespace zeb
