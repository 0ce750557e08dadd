// NEXUS files as tokens (Maddison, Swofford and Maddison 1997): comments anywhere, nested too;
// quoted names; punctuation as tokens of its own.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// A piece of a NEXUS file.
struct nexus_token {
  enum class kind { word, punctuation, end } what = kind::end;
  // Words in normal form without their quotes, blanks in them as "_"; one character of punctuation.
  std::string text;
  bool quoted = false;
  bool is(char c) const { return what == kind::punctuation && text[0] == c; }
  /// Is it this word, given in lower case? Case is ignored in the file; quoted words count too.
  bool is(std::string_view word) const;
  bool ends_block() const { return is("end") || is("endblock"); }
};

/// Reads the frame on top of the input stack, from which it started.
class nexus_reader {
 public:
  nexus_reader();

  /// Next character outside comments; -1 at the end of the file.
  int next();
  /// Next character, comments included.
  int next_raw();
  void back();
  /// Next character that isn't a blank, left unread.
  int peek();

  nexus_token token();
  /// The token without consuming it.
  const nexus_token& peek_token();
  /// Consumes the next token if it is this character.
  bool accept(char c);
  /// Errors unless the next token is this character; consumed. `where` goes into the message.
  void expect(char c, std::string_view where);
  /// The rest of a command, up to its ";" and over it.
  void skip_rest();
  /// A word or number as it stands up to a blank or ";", for values after "=".
  std::string value();

  /// A name in quotes, or all up to a blank or one of these: many files have punctuation in names.
  /// Only where no token is peeked at.
  std::string name(std::string_view ends);

  /// "Error reading NEXUS file:" with what is wrong and the line.
  [[noreturn]] void fail(std::string_view what) const;
  /// " (line N)", for other messages.
  std::string place() const;
  /// The same for what began in an earlier line (from 1).
  [[noreturn]] void fail_in_line(std::string_view what, int line) const;

  /// Notes that a block begins here.
  void begin_block() { block_line_ = line(); }
  /// Reads the first token of the next command of the block. False at the block's end, whose ";" is
  /// consumed too. Error where the file ends first.
  bool command_follows(nexus_token& first);

 private:
  nexus_token read_quoted();
  nexus_token read_token();
  int line() const;
  bool file_ended() const;

  int block_line_ = 0;
  int depth_;  // level of the input stack that holds the file
  bool has_peeked_ = false;
  nexus_token peeked_;
};

/// "yes" and "no" after an option, which may stand alone: "interleave", "interleave=no".
bool read_yes_no(nexus_reader& in);

/// Lower case, for comparisons.
std::string lower_case(std::string_view text);
/// The whole of a text as a number from `lowest` to `highest`; false otherwise.
bool whole_number(std::string_view text, int lowest, int highest, int* value);

}  // namespace zeb
