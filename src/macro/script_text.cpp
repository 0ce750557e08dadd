#include "macro/script_text.h"

#include <cstring>

#include "macro/bodies.h"
#include "macro/macro_state.h"

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

bool in_body_text() {
  if (macros.bodies.empty()) return false;
  const body_record& body = macros.bodies.back();
  return input.read_position >= body.text && input.read_position <= body.text_end;
}

}  // namespace

int read_raw_boundary() {
  for (;;) {
    if (in_expansion()) {
      const auto c = static_cast<unsigned char>(*input.read_position);
      if (!c) {
        read_on_at(expansion.resume);
        expansion.reading = false;
        continue;
      }
      read_on_at(input.read_position + 1);
      return c;  // a comma that wasn't typed ends no command
    }
    if (in_body_text()) {
      const auto c = static_cast<unsigned char>(*input.read_position);
      if (!c) {
        advance_body();
        continue;
      }
      read_on_at(input.read_position + 1);
      return c == ',' && commas_end_commands() ? ';' : c;
    }
    return plain_read_char();
  }
}

int peek_raw_char() {
  const int c = read_raw_char();
  unread_raw_char();
  return c;
}

void unread_raw_char() {
  if (in_expansion()) {
    if (input.read_position > expansion.text) read_on_at(input.read_position - 1);
  } else if (in_body_text()) {
    if (input.read_position > macros.bodies.back().text) read_on_at(input.read_position - 1);
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
  read_on_at(expansion.text);
}

bool last_char_was_plain() { return in_expansion() && input.read_position <= expansion.plain_end; }

void close_expansion() {
  if (!in_expansion()) return;
  read_on_at(expansion.resume);
  expansion.reading = false;
}

std::string take_expansion() {
  std::string rest;
  if (in_expansion()) rest = input.read_position;
  close_expansion();
  forget_expansion();
  return rest;
}

void forget_expansion() { expansion.reading = false; }

void reset_script_text() {
  close_expansion();
  forget_expansion();
  macro_reading_flags = {};
}

const char* outer_position() { return in_expansion() ? expansion.resume : input.read_position; }

bool body_text_ended() { return in_body_text() && *input.read_position == 0; }

void skip_to_body_end() {
  forget_expansion();
  read_on_at(macros.bodies.back().text_end);
}

}  // namespace zeb
