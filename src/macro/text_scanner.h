// Text that is passed over word by word, to find where a body or a branch ends. What stands in
// comments and in texts for the user isn't seen.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// Where the characters come from: what is being read, or a text as a whole.
class scanned_text {
 public:
  scanned_text() = default;
  virtual ~scanned_text() = default;
  scanned_text(const scanned_text&) = delete;
  scanned_text& operator=(const scanned_text&) = delete;
  /// The next character; -1 at the end. The text from there on, up to a NUL.
  virtual int get() = 0;
  virtual const char* rest() const = 0;
};

class text_scanner {
 public:
  /// What is passed over goes to `kept`, if not null: without comments, with runs of blanks folded
  /// into one and their line ends left, so that lines can be counted.
  explicit text_scanner(scanned_text& text, std::string* kept = nullptr)
      : text_(text), kept_(kept) {}

  /// Passes over the next word and returns it, in lower case; empty at the end of the text. Words
  /// that stand for a value, as in "'end'", "$end", "end = 5" or "my_end", aren't words here.
  std::string_view next();
  /// Nothing but blanks and comments stands before that word, from the end of the one before it or
  /// from the start of the text.
  bool follows_word() const { return follows_word_; }

 private:
  int get();
  void keep(int c);
  void skip_comment();
  void pass_to_semicolon();
  bool is_word(int before) const;

  scanned_text& text_;
  std::string* kept_;
  std::string word_;
  int last_ = ';';  // the character that was passed over last
  bool blank_ = false;
  bool ended_ = false;
  bool follows_word_ = false;
  bool after_pzeb_ = false;  // whose "stop" ends jobs, not a body
};

}  // namespace zeb
