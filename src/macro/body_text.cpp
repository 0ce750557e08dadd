#include "macro/body_text.h"

#include <cctype>
#include <cstring>
#include <string>
#include <string_view>

#include "base/errors.h"
#include "language/input.h"
#include "macro/loops.h"
#include "macro/script_text.h"

namespace zeb {

namespace {

// ---- bodies of loops ----

// Does the captured text end in `word`, with a non-letter before it?
bool ends_in(const std::string& text, std::string_view word) {
  if (text.size() < word.size()) return false;
  const std::size_t at = text.size() - word.size();
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(text[at + i])) != word[i]) return false;
  }
  return at == 0 || !std::isalpha(static_cast<unsigned char>(text[at - 1]));
}

bool opens_body(const std::string& text) {
  for (const char* word : {"loop", "sprit", "tbrit", "forfiles", "bandb"}) {
    if (ends_in(text, word)) return true;
  }
  return false;
}

[[noreturn]] void no_stop() { error_end("Found end-of-file:", "expecting \"stop\""); }

// ---- branches ----

constexpr std::size_t longest_word = 100;

[[noreturn]] void no_end() { error_end("Found end-of-file:", "\"if\" not matched by \"end\""); }

// Next character; a branch doesn't go on after the end of its loop.
int next_in_branch() {
  if (loop_text_ended()) no_end();
  return read_raw_char();
}

void refuse_end_of_file() {
  if (macros.level <= macros.frames.back().loop_base && input_ended()) no_end();
}

// Next word and what ended it: a blank, ";" or "(", which is consumed. A "(" or ";" that comes
// first counts as the word "x", ended by itself.
std::string next_word(int* ended_by) {
  int c = 0;
  do {
    c = next_in_branch();
    if (c < 33 || c == ';') refuse_end_of_file();
  } while (c < 33);
  if (c == '(' || c == ';') {
    *ended_by = c;
    return "x";
  }
  std::string word;
  for (; c > 32 && c != ';' && c != '('; c = next_in_branch()) {
    if (word.size() < longest_word) word += static_cast<char>(std::tolower(c));
  }
  *ended_by = c;
  return word;
}

// "qu" up to "quote": the shortest word that the command table takes for `quote`, and longer ones.
bool is_quote(std::string_view word) {
  return word.size() >= 2 && std::string_view("quote").starts_with(word);
}

}  // namespace

void capture_loop_text(loop_record& loop) {
  std::string text;
  int depth = 1;
  const auto room = static_cast<std::size_t>(macros.heap_end - macros.heap_top);
  bool blank = false;
  for (;;) {
    if (loop_text_ended()) no_stop();
    const int c = read_raw_char();
    if (c < 33) {
      // Newlines stay, so that messages can count the lines of the text.
      if (c == '\n') {
        if (blank && !text.empty() && text.back() == ' ') text.pop_back();
        text += '\n';
      } else if (!blank) {
        text += ' ';
      }
      blank = true;
    } else {
      blank = false;
      text += static_cast<char>(c);
    }
    if (text.size() + 2 > room) error_end("Not enough RAM available to continue macros...");
    // A body doesn't go on after the end of its file.
    if (c < 33 && macros.level <= macros.frames.back().loop_base && input_ended()) no_stop();
    // A word counts once it can't go on: look at what follows before counting.
    const int lower = std::tolower(c);
    if (lower != 'p' && lower != 't' && lower != 's' && lower != 'b') continue;
    if (std::isalpha(peek_raw_char())) continue;
    if (opens_body(text)) {
      ++depth;
      check_loop_depth(macros.level + depth);
    } else if (ends_in(text, "stop")) {
      if (--depth == 0) break;
    }
  }
  text.resize(text.size() - 4);
  text += ';';
  char* copy = take_heap(text.size() + 1);
  std::memcpy(copy, text.c_str(), text.size() + 1);
  loop.text = copy;
  loop.text_end = copy + text.size();
}

void skip_branch() {
  const reading_flag plain(&macro_reading::no_expansion);
  int depth = 1;
  for (;;) {
    int ended_by = 0;
    const std::string word = next_word(&ended_by);
    if (word == "if" || word == "ifnot") {
      ++depth;
    } else if (word == "else") {
      if (depth == 1) return;
    } else if (word == "end") {
      if (--depth == 0) return;
    } else if (word == "xend") {
      return;
    } else if (is_quote(word) && ended_by != ';') {
      while (next_in_branch() != ';') {
      }
      refuse_end_of_file();
    }
  }
}

}  // namespace zeb
