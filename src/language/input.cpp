#include "language/input.h"

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/command.h"
#include "base/errors.h"
#include "base/open_files.h"
#include "base/process.h"
#include "console/console.h"
#include "console/console_line.h"
#include "console/log.h"
#include "console/output.h"
#include "console/plain_line.h"
#include "console/screen.h"
#include "console/settings.h"
#include "language/hooks.h"
#include "language/steering.h"

namespace zeb {

input_state input;
character_reader char_source = {plain_read_char, plain_unread_char};

namespace {

struct prompt_hint {
  std::string told_for;  // the prompt of a command that went on over lines
};
prompt_hint hint;

input_frame* frame_at(int level) { return input.frames[static_cast<std::size_t>(level)].get(); }

// Puts the new text after the last bytes of the old one, at most `most_kept`, which can still be
// unread.
char* make_room(input_frame& frame, std::size_t most_kept = kept_behind) {
  const auto used = static_cast<std::size_t>(input.read_position - frame.text);
  const std::size_t keep = std::min(used, most_kept);
  std::memmove(frame.buffer, input.read_position - keep, keep);
  frame.text = frame.buffer;
  input.read_position = frame.buffer + keep;
  *input.read_position = 0;
  return input.read_position;
}

// A byte of code 0 would end the text: it counts as a blank.
void finish_text(char* text, std::size_t length) {
  std::replace(text, text + length, '\0', ' ');
  text[length] = 0;
}

// Every text that ends is closed by ";", so that an unfinished last command runs.
void supply_end(input_frame& frame, char* at) {
  std::memcpy(at, "\n;", 3);
  frame.at_end = true;
}

void read_from_file(input_frame& frame, char* text) {
  const std::size_t n = frame.file.read(text, refill_size);
  finish_text(text, n);
  if (n < refill_size) supply_end(frame, text + n);
}

// What a file that can't be read to its end has brought isn't taken for all of it.
void check_reading(input_frame& frame) {
  if (frame.file.fault().empty()) return;
  const std::string cause = frame.file.cause();
  frame.file.close();
  error_end("Can't read", frame.name + cause);
}

// The first text of a file, which is read once, so that a pipe will do. Editors put a byte order
// mark before UTF-8 text: it isn't part of it.
void begin_text(input_frame& frame) {
  constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";
  read_from_file(frame, frame.buffer);
  frame.text = frame.buffer;
  if (std::string_view(frame.buffer).starts_with(byte_order_mark)) {
    frame.text += byte_order_mark.size();
  }
}

bool next_argument_piece(char* text) {
  const std::string& all = input.argument_text;
  if (input.argument_position >= all.size()) return false;
  const std::size_t n = all.copy(text, refill_size, input.argument_position);
  input.argument_position += n;
  finish_text(text, n);
  return true;
}

// A user who sees the prompt of a command where the next command was meant has left out its ";".
void tell_what_ends_command() {
  const bool goes_on = command.prompt != "zeb*>";
  if (goes_on && command.prompt != hint.told_for && !macros_on()) {
    write_console("\n(\"" + command.command_name + "\" goes on: \";\" ends it)");
  }
  hint.told_for = goes_on ? command.prompt : "";
}

void refill_level_zero(input_frame& frame) {
  if (process.batch) return supply_end(frame, make_room(frame));
  // A typed line stands alone: errors show nothing of the lines before it.
  char* text = make_room(frame, input.from_arguments ? kept_behind : 0);
  if (input.from_arguments) {
    if (next_argument_piece(text)) return;
    if (process.slave) return supply_end(frame, text);
    if (process.background) {
      if (!input.arguments_closed) {
        input.arguments_closed = true;
        std::memcpy(text, "\n;", 3);
      } else if (!take_up_execute_file()) {
        write_log("\nQuitting ZEB...\n");
        end_process(1);
      }
      return;
    }
    input.from_arguments = false;
    std::snprintf(frame.name, sizeof frame.name, "%s", "Standard Input");
  }
  frame.typed_line = text;
  if (screen.up || frame.is_terminal) tell_what_ends_command();
  if (screen.up) {
    if (!read_console_line(text, refill_size)) supply_end(frame, text);
    return;
  }
  const std::size_t n =
      open_files.standard_input_taken ? 0 : read_plain_line(text, refill_size - 1);
  finish_text(text, n);
  if (n == 0) supply_end(frame, text);
}

void refill(input_frame& frame) {
  if (input.top == 0) return refill_level_zero(frame);
  char* text = make_room(frame);
  if (!frame.file.is_open()) return supply_end(frame, text);
  read_from_file(frame, text);
  check_reading(frame);
}

void check_nesting() {
  if (input.top >= input.mxproc) error_end("You can't nest", input.mxproc, "files");
}

input_frame& next_frame() {
  check_nesting();
  if (input.frames.size() == static_cast<std::size_t>(input.top) + 1) {
    input.frames.push_back(std::make_unique<input_frame>());
  }
  input_frame& frame = *frame_at(input.top + 1);
  frame.is_terminal = frame.at_end = frame.has_arguments = false;
  frame.arguments.clear();
  frame.line_number = 0;
  frame.text = frame.buffer;
  frame.buffer[0] = 0;
  return frame;
}

void make_top(input_frame& frame) {
  if (hooks_of_language.macros.frame_about_to_be_pushed)
    hooks_of_language.macros.frame_about_to_be_pushed();
  frame.saved_position = input.read_position;
  input.read_position = frame.text;
  ++input.top;
  if (hooks_of_language.macros.frame_pushed) hooks_of_language.macros.frame_pushed();
}

void refuse_open_file(const std::string& name) {
  for (int level = 1; level <= input.top; ++level) {
    if (frame_at(level)->file.is_open() && strcasecmp(frame_at(level)->name, name.c_str()) == 0) {
      error_end("File", name, "already in use");
    }
  }
  // What is read from the log would be written to its end again, and so on.
  const open_file* const written = find_open_file(name, true);
  if (written && log_is_open() && written->name == log_file.file.target())
    error_end("File", name, "already in use");
}

// What is left of the command that failed goes, unless its ";" has been read already.
void drop_rest_of_argument_command() {
  if (input.read_position > top_frame().text && input.read_position[-1] == ';') return;
  while (*input.read_position && *input.read_position != ';' && *input.read_position != ',') {
    ++input.read_position;
  }
  if (*input.read_position) return;
  const std::size_t end = input.argument_text.find_first_of(";,", input.argument_position);
  input.argument_position = std::min(end, input.argument_text.size());
}

}  // namespace

void start_input(int mxproc, std::string argument_text, const std::string& name) {
  input.mxproc = mxproc;
  input.frames.push_back(std::make_unique<input_frame>());
  input_frame& frame = *input.frames[0];
  frame.is_terminal = isatty(STDIN_FILENO) != 0;
  std::snprintf(frame.name, sizeof frame.name, "%s", name.c_str());
  input.top = 0;
  input.read_position = frame.buffer;
  input.from_arguments = !argument_text.empty();
  input.argument_text = std::move(argument_text);
  input.argument_position = 0;
}

void restart_level_zero(std::string text) {
  {
    const quiet_scope quiet;
    while (input.top > 0) pop_frame();
  }
  input_frame& frame = top_frame();
  frame.at_end = false;
  frame.line_number = 0;
  frame.text = frame.buffer;
  frame.buffer[0] = 0;
  input.read_position = frame.buffer;
  input.from_arguments = input.plain_commas = true;
  input.argument_text = std::move(text);
  input.argument_position = 0;
}

void set_input_depth(int mxproc) { input.mxproc = mxproc; }

// Called for every character of every matrix: a byte test, and the rare cases elsewhere.
int plain_read_char() {
  for (;;) {
    const char c = *input.read_position;
    if (c == ',' && commas_end_commands()) {
      *input.read_position++ = ';';
      return ';';
    }
    if (c != 0) {
      ++input.read_position;
      if (c == '\n') ++top_frame().line_number;
      return static_cast<unsigned char>(c);
    }
    while (*input.read_position == 0 && top_frame().at_end && input.top > 0) pop_frame();
    if (*input.read_position == 0) refill(top_frame());
  }
}

void plain_unread_char() {
  input_frame& frame = top_frame();
  if (input.read_position == frame.text) return;
  if (*--input.read_position == '\n') --frame.line_number;
}

const std::string* own_text(const std::string& name) {
  const auto text_of_name = hooks_of_language.text_of_name;
  return text_of_name ? text_of_name(name) : nullptr;
}

input_file opened_file(const std::string& name) {
  input_file file;
  if (name == "-" && !input.from_arguments && !process.batch) {
    error_end("Can't open the standard input: the commands come from there");
  }
  const std::string* const text = own_text(name);
  if (!(text ? file.open_text(name, *text) : file.open(name)))
    error_end("Can't open", name + file.cause());
  return file;
}

void check_encoding(input_file& file) {
  constexpr std::size_t enough = 64;
  if (!is_utf16(file.ahead(enough))) return;
  error_end("Can't read", file.name() + ": it is UTF-16 text. Save it as UTF-8");
}

void check_pushing(const std::string& name, bool may_recurse) {
  check_nesting();
  if (!may_recurse) refuse_open_file(name);
  if (name.size() >= sizeof input_frame::name) error_end("Can't open", name);
}

void push_file(const std::string& name, std::span<const std::string> arguments, bool may_recurse) {
  check_pushing(name, may_recurse);
  push_opened_file(opened_file(name), arguments);
}

void push_opened_file(input_file file, std::span<const std::string> arguments) {
  if (!file.is_terminal()) check_encoding(file);
  input_frame& frame = next_frame();
  frame.file = std::move(file);
  std::snprintf(frame.name, sizeof frame.name, "%s", frame.file.name().c_str());
  frame.is_terminal = frame.file.is_terminal();
  if (!frame.is_terminal) begin_text(frame);
  check_reading(frame);
  frame.arguments.assign(arguments.begin(), arguments.end());
  frame.has_arguments = !arguments.empty();
  make_top(frame);
  if (settings.report) report_line("Reading from", frame.name);
}

void push_string(std::string_view text, const char* name) {
  input_frame& frame = next_frame();
  ALWAYS_CHECK(text.size() < frame_text_size, "command string too long");
  text.copy(frame.buffer, text.size());
  finish_text(frame.buffer, text.size());
  std::snprintf(frame.name, sizeof frame.name, "%s", name);
  make_top(frame);
}

void pop_frame() {
  if (input.top == 0) return;
  input_frame& frame = top_frame();
  --input.top;
  if (input.error_target_level > input.top) input.error_target_level = -1;
  frame.file.close();
  frame.arguments.clear();
  input.read_position = frame.saved_position;
  if (hooks_of_language.macros.frame_popped) hooks_of_language.macros.frame_popped();
  if (input.top > 0 && top_frame().file.is_open() && settings.report) {
    report_line("Again reading from", top_frame().name);
  }
}

void rewind_top_frame() {
  input_frame& frame = top_frame();
  if (!frame.file.is_open()) return;
  if (!frame.file.rewind()) error_end("Can't go back in", frame.name);
  frame.at_end = false;
  frame.line_number = 0;
  begin_text(frame);
  check_reading(frame);
  input.read_position = frame.text;
}

void pop_all() {
  if (input.frames.empty()) return;
  if (input.error_target_level >= 0 && input.error_target_level <= input.top) {
    input.jump_pending = true;
    input.error_target_level = -1;  // once only: an exit script that fails doesn't start again
  }
  {
    const quiet_scope quiet;
    while (input.top > 0) pop_frame();
  }
  const bool after_loop =
      hooks_of_language.macros.command_failed && hooks_of_language.macros.command_failed();
  // A background run has nothing but its arguments, so those after the command go on; everywhere
  // else what was meant to follow the command could do harm now.
  if (process.background) {
    if (!after_loop) drop_rest_of_argument_command();
  } else if (!input.from_arguments || input.argument_position > 0) {  // else start-up failed
    input.argument_position = input.argument_text.size();
    if (!top_frame().at_end) *input.read_position = 0;
  }
}

void read_on_at(const char* position, int level) {
  if (level == input.top) return read_on_at(position);
  input.frames[static_cast<std::size_t>(level) + 1]->saved_position = const_cast<char*>(position);
}

void set_error_target(const std::string& file, const std::string& label) {
  input.error_target_file = file;
  input.error_target_label = label;
  input.error_target_level = input.top;
}

void clear_error_target() { input.error_target_level = -1; }

bool has_text_at(int level) {
  while (input.top > level && *input.read_position == 0 && top_frame().at_end) pop_frame();
  if (input.top != level) return input.top > level;
  return !(top_frame().at_end && *input.read_position == 0);
}

bool input_ended() {
  const char* rest = input.read_position;
  const auto outer_position = hooks_of_language.macros.outer_position;
  if (outer_position && outer_position() != rest) return false;  // text of an expansion is left
  return top_frame().at_end && (!rest[0] || !rest[1] || !rest[2]);
}

bool level_zero_ended() {
  return input.top == 0 && *input.read_position == 0 && top_frame().at_end;
}

bool is_current_file(std::string_view name) { return name == top_frame().name; }

bool take_up_execute_file() {
  execute_file file = take_execute_file();
  if (!file.instructions.is_open()) return false;
  check_nesting();
  push_opened_file(std::move(file.instructions), {});
  report_line("New instruction set taken up from", file.name);
  return true;
}

void plain_reading_again() {
  input.literal_comma = false;
  input.in_command_head = false;
}

bool accept_question_mark() {
  input.in_command_head = true;
  int c = 0;
  do {
    c = read_char();
  } while (c < 33);
  input.in_command_head = false;
  if (c == '?') return true;
  unread_char();
  return false;
}

void skip_rest_of_comment() {
  const auto read = hooks_of_language.macros.read_unexpanded
                        ? hooks_of_language.macros.read_unexpanded
                        : plain_read_char;
  const int line = top_frame().line_number + 1;
  for (int before = 0, c = read(); before != '*' || c != '/'; c = read()) {
    before = c;
    if (!input_ended()) continue;
    const std::string place =
        input.top > 0 ? " (comment begins in line " + std::to_string(line) + ")" : "";
    error_end("Found end-of-file:", "expecting \"*/\"" + place);
  }
}

int peek_char() {
  const int c = read_char();
  unread_char();
  return c;
}

void set_run_directory(const std::string& path) {
  input.run_directory = path;
  if (!path.ends_with('/')) input.run_directory += '/';
}

void run_pending_jump() {
  if (!input.jump_pending) return;
  input.jump_pending = false;
  if (hooks_of_language.macros.run_pending_jump) {
    run_in_jump_context(hooks_of_language.macros.run_pending_jump);
  }
  input.jump_pending = false;
}

void set_macro_layer(const macro_layer& layer) {
  hooks_of_language.macros = layer;
  char_source.read = layer.read_char ? layer.read_char : plain_read_char;
  char_source.unread = layer.unread_char ? layer.unread_char : plain_unread_char;
}

const char* start_of_shown_text(const input_frame& frame) {
  if (input.top > 0 || !frame.typed_line) return frame.text;
  return std::min<const char*>(frame.typed_line, input.read_position);
}

}  // namespace zeb
