#include "formats/nexus/tokens.h"

#include <cctype>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "base/text_columns.h"
#include "language/input.h"

namespace zeb {

namespace {

constexpr std::size_t longest_token = 100'000;
constexpr std::string_view punctuation = "()[]{}/\\,;:=*'\"`<>";

}  // namespace

bool nexus_token::is(std::string_view word) const {
  return what == kind::word && lower_case(text) == word;
}

nexus_reader::nexus_reader() : depth_(input.top) {}

bool nexus_reader::file_ended() const { return input.top < depth_ || input_ended(); }

int nexus_reader::next_raw() {
  if (file_ended()) return -1;
  return plain_read_char();
}

int nexus_reader::next() {
  int c = next_raw();
  int open = 0;
  const int first_line = line();
  while (c == '[' || open > 0) {
    if (c == '[') ++open;
    if (c == ']' && --open == 0) {
      // A comment parts words as a blank does.
      return ' ';
    }
    c = next_raw();
    if (c < 0) fail_in_line("a comment isn't closed", first_line);
  }
  return c;
}

void nexus_reader::back() {
  if (input.top >= depth_) plain_unread_char();
}

int nexus_reader::peek() {
  int c = next();
  while (c >= 0 && c < 33) c = next();
  if (c >= 0) back();
  return c;
}

nexus_token nexus_reader::token() {
  if (has_peeked_) {
    has_peeked_ = false;
    return peeked_;
  }
  nexus_token result = read_token();
  result.text = normal_form(result.text);
  return result;
}

// After the opening quote. A quote within the name is written twice.
nexus_token nexus_reader::read_quoted() {
  nexus_token result;
  result.what = nexus_token::kind::word;
  result.quoted = true;
  const int first_line = line();
  for (;;) {
    const int c = next_raw();
    if (c < 0 || c == '\n') fail_in_line("a quoted name isn't closed", first_line);
    if (c == '\'' && next_raw() != '\'') {
      back();
      return result;
    }
    if (result.text.size() < longest_token) result.text += c == ' ' ? '_' : static_cast<char>(c);
  }
}

nexus_token nexus_reader::read_token() {
  nexus_token result;
  int c = next();
  while (c >= 0 && c < 33) c = next();
  if (c < 0) return result;
  if (c == '\'') return read_quoted();
  if (punctuation.find(static_cast<char>(c)) != std::string_view::npos) {
    result.what = nexus_token::kind::punctuation;
    result.text.assign(1, static_cast<char>(c));
    return result;
  }
  result.what = nexus_token::kind::word;
  while (c >= 33 && punctuation.find(static_cast<char>(c)) == std::string_view::npos) {
    if (result.text.size() < longest_token) result.text += static_cast<char>(c);
    c = next_raw();
    if (c == '[') {
      back();
      return result;
    }
  }
  if (c >= 0) back();
  return result;
}

const nexus_token& nexus_reader::peek_token() {
  if (!has_peeked_) {
    peeked_ = token();
    has_peeked_ = true;
  }
  return peeked_;
}

bool nexus_reader::accept(char c) {
  if (!peek_token().is(c)) return false;
  has_peeked_ = false;
  return true;
}

void nexus_reader::expect(char c, std::string_view where) {
  const nexus_token found = token();
  if (found.is(c)) return;
  fail(std::string("expected '") + c + "' " + std::string(where) +
       (found.text.empty() ? std::string() : ", found " + found.text));
}

void nexus_reader::skip_rest() {
  for (;;) {
    const nexus_token found = token();
    if (found.is(';')) return;
    if (found.what == nexus_token::kind::end) fail("the file ends within a command");
  }
}

std::string nexus_reader::value() {
  const nexus_token found = token();
  if (found.what == nexus_token::kind::end || found.is(';')) fail("a value is missing after \"=\"");
  return found.text;
}

std::string nexus_reader::name(std::string_view ends) {
  if (peek() == '\'') return token().text;
  std::string result;
  int c = next_raw();  // no blank, and no comment
  for (; c > 32 && c != '[' && ends.find(static_cast<char>(c)) == std::string_view::npos;
       c = next_raw()) {
    if (result.size() > longest_token) fail("a name doesn't end");
    result += static_cast<char>(c);
  }
  if (c >= 0) back();
  return normal_form(result);
}

int nexus_reader::line() const { return input.top >= depth_ ? top_frame().line_number + 1 : 0; }

std::string nexus_reader::place() const {
  return line() > 0 ? text_of(" (line %i)", line()) : std::string();
}

void nexus_reader::fail(std::string_view what) const { fail_in_line(what, line()); }

void nexus_reader::fail_in_line(std::string_view what, int line) const {
  if (line > 0) error_end("Error reading NEXUS file:", what, text_of("(line %i)", line));
  error_end("Error reading NEXUS file:", what);
}

bool nexus_reader::command_follows(nexus_token& first) {
  first = token();
  if (first.what == nexus_token::kind::end) {
    fail_in_line("the file ends within the block that begins here", block_line_);
  }
  if (!first.ends_block()) return true;
  accept(';');
  return false;
}

bool read_yes_no(nexus_reader& in) {
  if (!in.accept('=')) return true;
  return lower_case(in.value()) != "no";
}

std::string lower_case(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return result;
}

bool whole_number(std::string_view text, int lowest, int highest, int* value) {
  const std::optional<int> read = whole_of<int>(text);
  if (read) *value = *read;
  return read && *read >= lowest && *read <= highest;
}

}  // namespace zeb
