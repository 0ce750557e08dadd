#include "macro/text_scanner.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>

#include "language/interpreter.h"

namespace zeb {

namespace {

bool is_word_character(int c) { return std::isalnum(c) || c == '_'; }

// After which a word can begin that opens or closes something.
bool can_precede_word(int c) { return c < 33 || std::strchr(";)}]'\"", c) != nullptr; }

std::string_view command_called(std::string_view word) {
  const command_row* const row = find_command(word);
  return row ? row->name : std::string_view();
}

// The commands whose text is for the user.
bool takes_text(std::string_view command) {
  constexpr std::string_view names[] = {"quote", "lquote", "errmsg", "progress"};
  return std::ranges::find(names, command) != std::end(names);
}

}  // namespace

int text_scanner::get() {
  if (ended_) return -1;
  const int c = text_.get();
  if (c < 0) {
    ended_ = true;
    return c;
  }
  if (kept_) keep(c);
  return c;
}

void text_scanner::keep(int c) {
  if (c >= 33) {
    *kept_ += static_cast<char>(c);
  } else if (c == '\n') {
    if (blank_ && !kept_->empty() && kept_->back() == ' ') kept_->pop_back();
    *kept_ += '\n';
  } else if (!blank_) {
    *kept_ += ' ';
  }
  blank_ = c < 33;
}

// "/*" has been passed over.
void text_scanner::skip_comment() {
  if (kept_) kept_->resize(kept_->size() - 2);
  blank_ = false;
  std::string* const kept = kept_;
  kept_ = nullptr;
  for (int before = 0, c = get(); c >= 0 && !(before == '*' && c == '/'); c = get()) {
    before = c;
    if (c == '\n' && kept) *kept += '\n';
  }
  kept_ = kept;
  if (kept_) keep(' ');
  last_ = ' ';
}

void text_scanner::pass_to_semicolon() {
  while (last_ != ';' && last_ >= 0) last_ = get();
}

// The word that has been passed over, and what was before it.
bool text_scanner::is_word(int before) const {
  const char* rest = text_.rest();
  if (!can_precede_word(before)) return false;
  // "'end'" and "'end[1]'" are values; so is what is set.
  if ((before == '\'' || before == '"') && (*rest == before || *rest == '[')) return false;
  while (*rest > 0 && *rest < 33) ++rest;
  return *rest != '=' || word_ == "loop";  // "loop =name"
}

std::string_view text_scanner::next() {
  follows_word_ = true;
  for (;;) {
    const int before = last_;
    last_ = get();
    if (last_ < 0) {
      word_.clear();
      return word_;
    }
    if (last_ == '/' && *text_.rest() == '*' && (before < 33 || before == ';' || before == ')')) {
      get();
      skip_comment();
      continue;
    }
    if (!is_word_character(last_)) {
      follows_word_ = follows_word_ && last_ < 33;
      continue;
    }
    // A number before a word is no part of it: "loop 1 3stop".
    word_.clear();
    bool letters = false;
    for (;;) {
      letters = letters || !std::isdigit(last_);
      if (letters) word_ += static_cast<char>(std::tolower(last_));
      if (!is_word_character(static_cast<unsigned char>(*text_.rest()))) break;
      last_ = get();
    }
    if (word_.starts_with("loop")) word_.resize(word_.find_last_not_of("0123456789") + 1);
    const bool stops_jobs = word_ == "stop" && after_pzeb_ && follows_word_;
    if (!word_.empty() && is_word(before) && !stops_jobs) {
      const std::string_view command = command_called(word_);
      after_pzeb_ = command == "pzeb";
      if (!takes_text(command)) return word_;
      pass_to_semicolon();
    }
    word_.clear();
    follows_word_ = false;
  }
}

}  // namespace zeb
