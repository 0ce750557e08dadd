// The files that a script reads, and files on disk.
#include <sys/stat.h>

#include <cctype>
#include <cstring>
#include <string>

#include "base/errors.h"
#include "base/number_text.h"
#include "base/safe_mode.h"
#include "functions/subjects.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/assignment.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/script_files.h"
#include "macro/script_text.h"
#include "macro/variables.h"

namespace zeb {
namespace {

double next_character() { return script_file_get(active_script_file()); }
double spied_character() { return script_file_peek(active_script_file()); }
double at_end() { return script_file_ended(active_script_file()); }
double line_number() { return active_script_file().line; }

double next_number() {
  script_file& file = active_script_file();
  const std::string text = script_file_number(file);
  const std::optional<double> value = real_of(text);
  if (!value) {
    const std::string found = text + script_file_string(file);
    error_end("Expected a number in file", file.name,
              "found:", found.empty() ? "end of file" : found);
  }
  return *value;
}

// "isfile name" or "isfile[name]".
double file_exists() {
  const bool brackets = accept_char('[');
  const reading_flag quotes(&macro_reading::no_quotes);
  skip_blanks_peek();
  std::string name;
  for (int c = read_char();; c = read_char()) {
    if (c < 33 || c == ';' || (brackets ? c == ']' : c == ')')) {
      if (!brackets || c == ';') unread_char();
      break;
    }
    name += static_cast<char>(c);
  }
  struct stat status {};
  return stat(name.c_str(), &status) == 0 && refusal_of_reading(name).empty();
}

// The texts at which `hiftext` stops: one text, or any of the characters in parentheses.
struct text_end {
  std::string text = "\n";
  bool any_of = false;
};

char code_or_character(const std::string& raw, std::size_t* at) {
  if (raw[*at] != '&' || *at + 1 >= raw.size()) return raw[*at];
  if (!std::isdigit(static_cast<unsigned char>(raw[*at + 1]))) {
    error_end("Terminating character must be an ASCII number, 0 or more");
  }
  int code = 0;
  while (*at + 1 < raw.size() && std::isdigit(static_cast<unsigned char>(raw[*at + 1]))) {
    code = (code * 10 + (raw[++*at] - '0')) & 255;
  }
  return static_cast<char>(code);
}

text_end read_text_end() {
  text_end end;
  std::string raw;
  // Between parentheses blanks and semicolons stand for themselves.
  for (int c = read_raw_char();; c = read_raw_char()) {
    const bool inside = raw.starts_with('(') && !raw.ends_with(')');
    if (!inside && (c < 33 || c == ';')) {
      unread_raw_char();
      break;
    }
    raw += static_cast<char>(c);
  }
  if (raw.size() > 1 && raw.front() == '(' && raw.back() == ')') {
    end.any_of = true;
    raw = raw.substr(1, raw.size() - 2);
  }
  if (raw.empty()) error_end("Must give the text at which to stop");
  end.text.clear();
  for (std::size_t i = 0; i < raw.size(); ++i) end.text += code_or_character(raw, &i);
  return end;
}

[[noreturn]] double string_from_file() {
  error_end("\"hifstring\" is a string, not a number: use it as $hifstring");
}

double text_from_file() {
  if (assignment.target < 0) error_end("Hiftext can be used only to set a variable");
  if (!macros.protection)
    error_end("Expression \"hiftext\" valid only under protection mode 1 or 2");
  if (assignment.sizes.size() != 1) error_end("Expression \"hiftext\" requires one-dim arrays");
  const std::size_t room =
      static_cast<std::size_t>(assignment.room) * static_cast<std::size_t>(variable_cell_size()) -
      1;
  std::size_t most = room;
  text_end end;
  for (;;) {
    const int c = skip_blanks_peek();
    if (c == ':') {
      next_nonblank();
      const double size = macro_whole_value();
      if (!(size >= 1)) error_end("Size of text to copy must be >= 1");
      if (size < static_cast<double>(room)) most = static_cast<std::size_t>(size);
    } else if (c == '/') {
      next_nonblank();
      end = read_text_end();
    } else {
      break;
    }
  }
  script_file& file = active_script_file();
  std::string text;
  while (text.size() < most) {
    const int c = script_file_get(file);
    if (c < 0) break;
    text += static_cast<char>(c);
    if (end.any_of ? end.text.find(static_cast<char>(c)) != std::string::npos
                   : text.ends_with(end.text))
      break;
  }
  write_string(text);
  return 0;
}

// clang-format off
constexpr expression_function rows[] = {
    {"hifchar", "", "reads the next character of the active hifile as its code; -1 at the end", next_character},
    {"hifspy", "", "code of the next character of the active hifile, left unread; -1 at the end", spied_character},
    {"hifeof", "", "1 when only blanks remain in the active hifile", at_end},
    {"hifline", "", "number of the current line of the active hifile, from 0", line_number},
    {"hifnumber", "", "reads the next number of the active hifile", next_number},
    {"hifstring", "", "used as $hifstring: the next string of the active hifile", string_from_file},
    {"hiftext", " :N /T", "reads text of the active hifile into a variable, at most N characters or up to text T", text_from_file},
    {"isfile", "[name]", "1 if the file exists", file_exists},
};
// clang-format on

}  // namespace

const std::span<const expression_function> file_functions = rows;

}  // namespace zeb
