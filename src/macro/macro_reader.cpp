#include "macro/macro_reader.h"

#include <cctype>
#include <cstring>

#include "base/errors.h"
#include "base/process.h"
#include "console/output.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "macro/flow.h"
#include "macro/jumps.h"
#include "macro/loop_levels.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/string_conversion.h"
#include "macro/variable_expansion.h"

namespace zeb {

macro_reading macro_reading_flags;

namespace {

// The text of one expansion may pass 8,500 bytes by a long number and the rest of a range.
constexpr std::size_t expansion_size = 9500;

// The expanded text that is read before the rest. While it is being read, a further expansion takes
// the place of what was read and keeps the outer position to come back to.
struct expansion_buffer {
  char text[expansion_size + 1] = {};
  char* resume = nullptr;  // where the outer text goes on
  const char* plain_end =
      nullptr;  // text before it stands for itself: nothing in it is expanded again
  bool reading = false;
};
expansion_buffer expansion;

bool in_expansion() {
  return expansion.reading && input.read_position >= expansion.text &&
         input.read_position <= expansion.text + expansion_size;
}

bool in_loop_text() {
  if (macros.level < 0) return false;
  const loop_record& loop = macros.loops[macros.level];
  return input.read_position >= loop.text && input.read_position <= loop.text_end;
}

// Next character of whatever text is being read, unexpanded.
int fetch() {
  // Whatever text it is: only its end, commas at level 0 and the count of lines need a closer look.
  const char plain = *input.read_position;
  if (plain != 0 && plain != ',' && plain != '\n') {
    ++input.read_position;
    return static_cast<unsigned char>(plain);
  }
  for (;;) {
    if (in_expansion()) {
      const auto c = static_cast<unsigned char>(*input.read_position);
      if (!c) {
        input.read_position = expansion.resume;
        expansion.reading = false;
        continue;
      }
      ++input.read_position;
      return c == ',' && input.top == 0 && !input.literal_comma ? ';' : c;
    }
    if (in_loop_text()) {
      const auto c = static_cast<unsigned char>(*input.read_position);
      if (!c) {
        advance_loop();
        continue;
      }
      ++input.read_position;
      return c == ',' && input.top == 0 && !input.literal_comma ? ';' : c;
    }
    return plain_read_char();
  }
}

void unfetch() { macro_unread_char(); }

bool starts_reference(int c) { return std::isalnum(c) || c == '('; }

// `#N` and `#name`: the counter of a loop. Returns false, with the text untouched but for what was
// put back, where there is no such loop.
bool expand_loop_counter() {
  const int next = fetch();
  unfetch();
  if (!std::isalnum(next) && next != '(') {
    error_end("When macros are allowed, \"#\" must be followed by number/name of loop");
  }
  if (std::isdigit(next) || next == '(') {
    const int number = [&] {
      if (next == '(') {
        const double value = macro_value();
        return value >= 0 && value < 10000 ? static_cast<int>(value) : -1;
      }
      int value = 0;
      int c = fetch();
      for (; std::isdigit(c); c = fetch()) value = value < 10000 ? value * 10 + (c - '0') : value;
      unfetch();
      return value;
    }();
    const int level = macros.frames.back().loop_base + number;
    if (number < 1 || level > macros.level) {
      insert_text("#" + std::to_string(number));
      return false;
    }
    insert_text(std::to_string(macros.loops[level].current));
    return true;
  }
  std::string name;
  int c = fetch();
  for (; std::isalnum(c) || c == '_'; c = fetch()) {
    if (name.size() < longest_loop_name) name += static_cast<char>(c);
  }
  unfetch();
  for (int level = macros.level; level >= 0; --level) {
    if (macros.loops[level].name && name == macros.loops[level].name) {
      insert_text(std::to_string(macros.loops[level].current));
      return true;
    }
  }
  insert_text("#" + name);
  return false;
}

// `%N` and `%(expression)`: an argument of the run file.
void expand_argument() {
  const int next = fetch();
  double number = 0;
  if (next == '(') {
    unfetch();
    number = macro_value();
  } else {
    number = next - '0';
  }
  const input_frame& frame = *input.frames[static_cast<std::size_t>(input.top)];
  const auto count = static_cast<double>(frame.arguments.size());
  if (number >= 1 && number <= count) {
    insert_text(frame.arguments[static_cast<std::size_t>(number) - 1]);
  } else {
    insert_text(" ");
  }
}

void frame_pushed() {
  macro_frame frame;
  const macro_frame& caller = macros.frames.back();
  frame.shift = std::max(caller.shift, next_free_variable()) + caller.private_count;
  if (frame.shift > macros.max_variables) frame.shift = macros.max_variables;
  frame.loop_base = macros.level;
  frame.named_count = macros.named_count;
  frame.heap_top = macros.heap_top;
  macros.frames.push_back(frame);
}

// What was being read when a file was called is kept apart, since the file's own expansions use the
// same buffer.
void frame_about_to_be_pushed() {
  macro_frame& caller = macros.frames.back();
  caller.pending_text.clear();
  if (in_expansion() && *input.read_position) {
    caller.pending_text = input.read_position;
    input.read_position = expansion.resume;
  } else if (in_expansion()) {
    input.read_position = expansion.resume;
  }
  expansion.reading = false;
}

void frame_popped() {
  if (macros.frames.size() < 2) return;
  const macro_frame frame = macros.frames.back();
  macros.frames.pop_back();
  // Loops of the file end with it, then its names, unless `return =` keeps them.
  leave_loops_above(frame.loop_base);
  if (!frame.keep_names) {
    while (macros.named_count > 0 && macros.named[macros.named_count - 1] >= frame.shift) {
      const int last = macros.named[--macros.named_count];
      macros.names[last] = nullptr;
      if (macros.dimension_count) macros.dimension_count[last] = 0;
    }
    if (macros.named_count <= frame.named_count) macros.heap_top = frame.heap_top;
  }
  macro_frame& caller = macros.frames.back();
  expansion.reading = false;
  if (!caller.pending_text.empty()) {
    const std::string pending = caller.pending_text;
    caller.pending_text.clear();
    insert_text(pending);
  }
}

}  // namespace

int read_raw_char() { return fetch(); }

int peek_raw_char() {
  const int c = fetch();
  unfetch();
  return c;
}

int macro_read_char() {
  for (;;) {
    const int c = fetch();
    // Everything that can start an expansion lies in this range; letters and digits leave at once.
    if (c > '\'' || c < '"' || macro_reading_flags.no_expansion) return c;
    if (in_expansion() && input.read_position <= expansion.plain_end) return c;
    switch (c) {
      case '\'':
      case '"': {
        // Behind a command's word a quote may open a title: the handler decides.
        if (macro_reading_flags.no_quotes || input.in_command_head) return c;
        const int next = peek_raw_char();
        if (!starts_reference(next) && next != '/') return c;
        expand_variable(static_cast<char>(c));
        continue;
      }
      case '$': {
        if (macro_reading_flags.no_strings || input.in_command_head) return c;
        if (!starts_reference(peek_raw_char())) return c;
        convert_string();
        continue;
      }
      case '%': {
        const int next = peek_raw_char();
        if (!std::isdigit(next) && next != '(') return c;
        expand_argument();
        continue;
      }
      case '#':
        if (macro_reading_flags.no_quotes && !std::isalnum(peek_raw_char())) return c;
        if (!expand_loop_counter()) {
          // No such loop: the text stands as it was written, its "#" plain.
          return fetch();
        }
        continue;
      default:
        return c;
    }
  }
}

void macro_unread_char() {
  if (in_expansion()) {
    if (input.read_position > expansion.text) --input.read_position;
  } else if (in_loop_text()) {
    if (input.read_position > macros.loops[macros.level].text) --input.read_position;
  } else {
    plain_unread_char();
  }
}

void insert_text(std::string_view text, std::size_t expandable_tail) {
  std::string rest;
  std::size_t plain = text.size() - expandable_tail;
  if (in_expansion()) {
    rest = input.read_position;
    if (expandable_tail == 0 && expansion.plain_end > input.read_position) {
      plain += static_cast<std::size_t>(expansion.plain_end - input.read_position);
    }
  } else {
    expansion.resume = input.read_position;
  }
  std::string all(text);
  all += rest;
  if (all.size() > expansion_size) all.resize(expansion_size);
  std::memcpy(expansion.text, all.data(), all.size());
  expansion.text[all.size()] = 0;
  expansion.plain_end = expansion.text + plain;
  expansion.reading = true;
  input.read_position = expansion.text;
}

void close_expansion() {
  if (!in_expansion()) return;
  input.read_position = expansion.resume;
  expansion.reading = false;
}

bool loop_text_ended() { return in_loop_text() && *input.read_position == 0; }

const char* outer_position() { return in_expansion() ? expansion.resume : input.read_position; }

void advance_loop() {
  loop_record& loop = macros.loops[macros.level];
  loop.current += loop.step;
  const bool within = loop.step == 0  ? false
                      : loop.step > 0 ? loop.current <= loop.end
                                      : loop.current >= loop.end;
  if (within && loop.current >= 0) {
    if (macros.report)
      emitf("Loop %i ---> %i", macros.level - macros.frames.back().loop_base,
            static_cast<int>(loop.current));
    input.read_position = const_cast<char*>(loop.text);
    // Rounds that neither print nor search would leave the user without a way to stop them.
    if (++macros.rounds % 128 == 0 && (settings.break_polling || process.background))
      check_interrupt(1);
    return;
  }
  input.read_position = const_cast<char*>(loop.resume);
  leave_loop();
}

void skip_to_loop_end() {
  expansion.reading = false;
  input.read_position = const_cast<char*>(macros.loops[macros.level].text_end);
}

void connect_macro_reader() {
  read_char = macro_read_char;
  unread_char = macro_unread_char;
  read_value = macro_read_value;
  list_words.number_of = macro_list_word;
  macro_hooks.frame_about_to_be_pushed = frame_about_to_be_pushed;
  macro_hooks.frame_pushed = frame_pushed;
  macro_hooks.frame_popped = frame_popped;
  macro_hooks.command_failed = reset_macro_flow;
  macro_hooks.show_error_place = show_script_place;
  macro_hooks.loop_level = [] { return macros.level + 1; };
  macro_hooks.run_pending_jump = run_error_target;
  reset_macro_reader();
}

void disconnect_macro_reader() {
  reset_macro_reader();
  read_char = plain_read_char;
  unread_char = plain_unread_char;
  read_value = plain_read_value;
  list_words.number_of = nullptr;
  macro_hooks = {};
}

void reset_macro_reader() {
  close_expansion();
  expansion.reading = false;
  macro_reading_flags = {};
}

}  // namespace zeb
