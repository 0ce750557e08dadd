// `hifile`: opening and moving through the input files of a script.
#include <algorithm>
#include <cctype>
#include <string>
#include <utility>

#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "macro/commands.h"
#include "macro/macro_language.h"
#include "macro/macro_values.h"
#include "macro/script_files.h"

namespace zeb {

namespace {

int find_file(const std::string& name) {
  for (std::size_t i = 0; i < script_files.files.size(); ++i) {
    if (script_files.files[i].name == name) return static_cast<int>(i);
  }
  return -1;
}

int known_file(const std::string& name) {
  const int index = find_file(name);
  if (index < 0) error_end_f("No open file named %s", name.c_str());
  return index;
}

std::string read_known_name() {
  if (read_file_name() == 0) error_end("Must give filename");
  return std::string(token());
}

// "[name]", if given; else the active file.
int read_bracketed_file() {
  if (!accept_char('[')) {
    if (script_files.active < 0) error_end("No input file is active");
    return script_files.active;
  }
  if (skip_blanks_peek() == '"') {
    read_file_name();
    const std::string quoted(token());
    if (!accept_char(']')) error_end("Need closing brackets");
    return known_file(quoted);
  }
  std::string name;
  int c = next_nonblank();
  for (; c != ']' && c != ';'; c = read_char()) {
    if (c > 32) name += static_cast<char>(c);
  }
  if (c == ';') error_end("Need closing brackets");
  return known_file(name);
}

std::int64_t read_count() {
  if (skip_blanks_peek() == ';') return 1;
  double value = 1;
  if (!read_optional_whole(&value)) return 1;
  return value < 0 ? 0 : value > 9e15 ? 9'000'000'000'000'000 : static_cast<std::int64_t>(value);
}

void open_file() {
  const std::string name = read_known_name();
  if (find_file(name) >= 0) error_end_f("File \"%s\" is already open", name.c_str());
  if (script_files.files.size() >= static_cast<std::size_t>(script_files.most_files)) {
    error_end_f("Can't have more than %i files open simultaneously", script_files.most_files);
  }
  script_file opened{name, {}, 0};
  if (!opened.file.open(name)) error_end("Can't open file", name + opened.file.cause());
  script_files.files.push_back(std::move(opened));
  script_files.active = static_cast<int>(script_files.files.size()) - 1;
  if (settings.report) report_line("Opened file", name, "for input");
}

void close_file() {
  if (script_files.files.empty()) error_end("No input files are open");
  const int index = skip_blanks_peek() == '[' ? read_bracketed_file() : script_files.active;
  if (index < 0) error_end("No input file is active");
  const auto at = script_files.files.begin() + index;
  const std::string name = at->name;
  script_files.files.erase(at);
  if (script_files.active == index) {
    script_files.active = static_cast<int>(script_files.files.size()) - 1;
  } else if (script_files.active > index) {
    --script_files.active;
  }
  if (!settings.report) return;
  std::string text = text_of("Closed file %s", name.c_str());
  text += script_files.active < 0 ? " (no file is active now)"
                                  : " (active file is now " + active_script_file().name + ")";
  report_line(text);
}

void list_files() {
  if (script_files.files.empty()) {
    report_line("No input files are open");
    return;
  }
  report_line("\nList of open input files (* = active):");
  for (std::size_t i = 0; i < script_files.files.size(); ++i) {
    const char* mark = static_cast<int>(i) == script_files.active ? "   * " : "     ";
    report_line(mark + script_files.files[i].name);
  }
}

// A character, or "&N" for the one of code N.
int read_sought_character() {
  const int c = next_nonblank();
  if (c == ';') error_end("No string specified");
  if (c != '&' || !std::isdigit(skip_blanks_peek())) return c;
  return static_cast<int>(macro_whole_value()) & 255;
}

void seek_character(script_file& file) {
  const int sought = read_sought_character();
  std::int64_t times = read_count();
  while (times > 0) {
    const int c = script_file_get(file);
    if (c < 0) return;
    if (c == sought) --times;
  }
}

std::string read_sought_string() {
  std::string text;
  if (read_item() == 0) error_end("No string specified");
  const std::string raw(token());
  for (std::size_t i = 0; i < raw.size(); ++i) {
    if (raw[i] == '&' && i + 1 < raw.size() &&
        std::isdigit(static_cast<unsigned char>(raw[i + 1]))) {
      int code = 0;
      while (i + 1 < raw.size() && std::isdigit(static_cast<unsigned char>(raw[i + 1])) &&
             code < 256) {
        code = code * 10 + (raw[++i] - '0');
      }
      text += static_cast<char>(code & 255);
    } else {
      text += raw[i];
    }
  }
  if (text.size() > 200) error_end("String to seek is too long (max. 200 chars.)");
  return text;
}

void seek_string(script_file& file) {
  const std::string sought = read_sought_string();
  std::int64_t times = read_count();
  std::string window;
  while (times > 0) {
    const int c = script_file_get(file);
    if (c < 0) return;
    window += static_cast<char>(c);
    if (window.size() > sought.size()) window.erase(0, 1);
    if (window == sought) {
      --times;
      window.clear();
    }
  }
}

void skip_lines(script_file& file) {
  for (std::int64_t n = read_count(); n > 0; --n) {
    int c = script_file_get(file);
    while (c >= 0 && c != '\n') c = script_file_get(file);
    if (c < 0) return;
  }
}

void set_most_files() {
  int most = 0;
  const bool given = read_optional_int(&most);
  check_end();
  if (given && most < 1) error_end("Max. number of input files must be 1 or more");
  if (most > 200) error_end("Can't have more than", 200, "input files open");
  if (given && macros_on()) error_end("Max. number of input files can't be set with macros ON");
  if (given) script_files.most_files = most;
  report_line("Max. number of input files is", script_files.most_files);
}

/// Options act on the open files; nothing is kept from one to the next.
struct input_files {};

script_file& read_file() {
  return script_files.files[static_cast<std::size_t>(read_bracketed_file())];
}

void read_open(input_files&) { open_file(); }
void read_close(input_files&) { close_file(); }
void read_list_files(input_files&) { list_files(); }
void read_active(input_files&) {
  const std::string name = read_known_name();
  script_files.active = known_file(name);
  if (settings.report) emitf("Setting file \"%s\" as active (=default) input file", name.c_str());
}
void read_skip(input_files&) {
  script_file& file = read_file();
  for (std::int64_t n = read_count(); n > 0 && script_file_get(file) >= 0; --n) continue;
}
void read_skips(input_files&) {
  script_file& file = read_file();
  for (std::int64_t n = read_count(); n > 0 && !script_file_string(file).empty(); --n) continue;
}
void read_skipline(input_files&) { skip_lines(read_file()); }
void read_seek(input_files&) { seek_character(read_file()); }
void read_seeks(input_files&) { seek_string(read_file()); }

constexpr command_options rows = {
    form<read_open>("open").argument("file").help("opens the file and makes it the active one"),
    form<read_active>("active").argument("file").help("makes an open file the active one"),
    form<read_list_files>("list").help("lists the open files"),
    form<read_close>("close").argument("[file]").help("closes the file"),
    form<read_skip>("skip").argument("[file] N").help("passes over N bytes"),
    form<read_skips>("skips").argument("[file] N").help("passes over N strings"),
    form<read_skipline>("skipline").argument("[file] N").help("passes over N lines"),
    form<read_seek>("seek")
        .argument("[file] C N")
        .help("reads until character C (&N: of code N) was found N times"),
    form<read_seeks>("seeks").argument("[file] S N").help("the same for string S"),
};

}  // namespace

constexpr option_table hifile_options =
    rows.table("hifile", {.unknown = "Unidentified option in hifile command",
                          .no_word = "Unidentified option in hifile command"});

void hifile_command() {
  no_timing();
  if (accept_char('=')) {
    set_most_files();
    return;
  }
  require_macros();
  if (skip_blanks_peek() == ';') {
    list_files();
    return;
  }
  input_files files;
  while (skip_blanks_peek() != ';') read_option(files, hifile_options);
}

}  // namespace zeb
