#include "macro/body_text.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

#include "base/errors.h"
#include "base/message_text.h"
#include "language/input.h"
#include "macro/bodies.h"
#include "macro/macro_state.h"
#include "macro/script_text.h"
#include "macro/text_scanner.h"

namespace zeb {

namespace {

// " (loop begins in line 12)": what has no end, by the line of the file it begins in.
std::string beginning(const char* what) {
  const input_frame& frame = top_frame();
  const bool counts = input.top > 0 && frame.file.is_open() &&
                      open_bodies() <= macros.frames.back().bodies_at_entry;
  return counts ? text_of(" (%s begins in line %i)", what, frame.line_number + 1) : std::string();
}

// The text that is being read; it doesn't go on after the end of a body or of its file.
class read_text : public scanned_text {
 public:
  explicit read_text(std::string error) : error_(std::move(error)) {}
  int get() override {
    if (body_text_ended()) fail();
    const int c = read_raw_char();
    const bool in_file = open_bodies() <= macros.frames.back().bodies_at_entry;
    if ((c < 33 || c == ';') && in_file && input_ended()) fail();
    return c;
  }
  const char* rest() const override {
    peek_raw_char();
    return input.read_position;
  }

 private:
  [[noreturn]] void fail() const { error_end("Found end-of-file:", error_); }
  std::string error_;
};

class whole_text : public scanned_text {
 public:
  explicit whole_text(const char* text) : place_(text) {}
  int get() override { return *place_ ? static_cast<unsigned char>(*place_++) : -1; }
  const char* rest() const override { return place_; }

 private:
  const char* place_;
};

// ---- bodies ----

struct body_words {
  const char* command;
  const char* closing;
  std::span<const std::string_view> opening;
};

constexpr std::string_view ending_in_stop[] = {"loop", "sprit", "tbrit", "forfiles", "bandb"};
constexpr std::string_view ending_in_endtrav[] = {"travtree"};
constexpr std::string_view ending_in_endrecs[] = {"iterrecs"};
constexpr std::string_view ending_in_endcomb[] = {"combine"};

body_words words_of(body_kind kind) {
  switch (kind) {
    case body_kind::loop:
      return {"loop", "stop", ending_in_stop};
    case body_kind::moves:
      return {"enumeration", "stop", ending_in_stop};
    case body_kind::files:
      return {"forfiles", "stop", ending_in_stop};
    case body_kind::travtree:
      return {"travtree", "endtrav", ending_in_endtrav};
    case body_kind::iterrecs:
      return {"iterrecs", "endrecs", ending_in_endrecs};
    case body_kind::combine:
      return {"combine", "endcomb", ending_in_endcomb};
  }
  return {};
}

bool is_swap(std::string_view word) {
  return word == "sprit" || word == "tbrit" || word == "bandb";
}

void check_opening(body_kind kind, std::string_view word, int depth) {
  if (kind == body_kind::moves && is_swap(word))
    error_end("Can't nest \"sprit\", \"tbrit\", or \"bandb\" commands");
  if (words_of(kind).closing == std::string_view("stop")) check_loop_depth(depth);
}

// The text up to the closing word, which is read.
std::string text_of_body(body_kind kind, const body_words& words) {
  const auto room = static_cast<std::size_t>(macros.heap_end - macros.heap_top);
  read_text source(std::string("expecting \"") + words.closing + "\"" + beginning(words.command));
  std::string text;
  text_scanner scanner(source, &text);
  for (int depth = 1;;) {
    const std::string_view word = scanner.next();
    if (text.size() + 2 > room) error_end("Not enough RAM available to continue macros...");
    if (std::ranges::find(words.opening, word) != words.opening.end()) {
      check_opening(kind, word, depth);
      ++depth;
    } else if (word == words.closing && --depth == 0) {
      text.resize(text.size() - word.size());
      return text + ";";
    }
  }
}

// ---- branches ----

// One `end` closes a whole chain of branches where the text has one for each of them, and not one
// for each `if`.
else_style style_of(const char* all) {
  whole_text source(all);
  text_scanner scanner(source);
  int ifs = 0;
  int chained = 0;
  int ends = 0;
  std::string before;
  for (std::string_view word = scanner.next(); !word.empty(); word = scanner.next()) {
    const bool is_if = word == "if" || word == "ifnot";
    if (is_if) ++ifs;
    if (is_if && before == "else" && scanner.follows_word()) ++chained;
    if (word == "end") ++ends;
    before = word;
  }
  return chained > 0 && ends == ifs - chained ? else_style::chained : else_style::nested;
}

else_style style_of_file() {
  const input_frame& frame = top_frame();
  input_file file;
  if (input.top == 0 || !frame.file.is_open() || frame.is_terminal || !file.open(frame.name, false))
    return else_style::nested;
  return style_of(file.rest().c_str());
}

// Of the body or file that is being read.
bool is_chained() {
  const bool in_body = open_bodies() > macros.frames.back().bodies_at_entry;
  else_style& style = in_body ? macros.bodies.back().style : macros.frames.back().style;
  if (style == else_style::unknown)
    style = in_body ? style_of(macros.bodies.back().text) : style_of_file();
  return style == else_style::chained;
}

}  // namespace

body_record capture_body(body_kind kind, const std::string& name) {
  const std::string text = text_of_body(kind, words_of(kind));
  close_expansion();
  body_record body;
  body.kind = kind;
  body.saved_top = macros.heap_top;
  body.resume = input.read_position;
  const std::size_t name_size = name.empty() ? 0 : name.size() + 1;
  char* place = take_heap(name_size + text.size() + 1);
  if (name_size) body.name = std::strcpy(place, name.c_str());
  body.text = std::strcpy(place + name_size, text.c_str());
  body.text_end = body.text + text.size();
  return body;
}

void skip_branch(branch from) {
  const reading_flag plain(&macro_reading::no_expansion);
  read_text source("\"if\" not matched by \"end\"" + beginning("what is skipped"));
  text_scanner scanner(source);
  bool after_else = from == branch::after_else;
  for (int depth = 1;;) {
    const std::string_view word = scanner.next();
    const bool follows_else = after_else && scanner.follows_word();
    after_else = word == "else";
    if (word == "if" || word == "ifnot") {
      if (!follows_else || !is_chained()) ++depth;
    } else if (word == "else") {
      if (depth == 1 && (from == branch::after_if || !is_chained())) return;
    } else if (word == "end") {
      if (--depth == 0) return;
    } else if (word == "xend") {
      return;
    }
  }
}

}  // namespace zeb
