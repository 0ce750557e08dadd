// Commands that read from files: `procedure`, `run`, run files by their word, `mxproc`.
#include "language/commands/procedure_command.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "base/errors.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/commands/commands.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"

namespace zeb {

namespace {

constexpr std::size_t most_arguments = 32;
constexpr std::size_t longest_argument = 512;
constexpr std::size_t argument_pool = 2048;  // bytes for the arguments of all open files
constexpr int most_input_files = 100'000;

// Skips the mark of NEXUS files, which is nothing for the macro language to see.
bool starts_as_nexus() {
  constexpr std::string_view mark = "#NEXUS";
  std::string_view text = input.read_position;
  const std::size_t blanks = std::min(text.find_first_not_of(" \t\r\n"), text.size());
  text.remove_prefix(blanks);
  if (text.size() <= mark.size() || !is_prefix(mark, text)) return false;
  if (static_cast<unsigned char>(text[mark.size()]) >= 33) return false;
  for (std::size_t i = 0; i < blanks + mark.size(); ++i) plain_read_char();  // counts the lines
  return true;
}

bool is_sequence_type(std::string_view word) {
  return word == "dna" || word == "proteins" || word == "numeric";
}

// "5" or "=5".
bool is_reserved_number(std::string_view word) {
  const std::string_view number = word.substr(word.starts_with('=') ? 1 : 0);
  return !number.empty() && number.find_first_not_of("0123456789") == std::string_view::npos;
}

// Makes the name of a file of sequences the current token, and returns what stands before it for
// their type, if anything. The last word is the name, whatever it is.
std::string read_sequence_type(const char* no_file) {
  std::string type;
  for (;;) {
    const bool quoted = skip_blanks_peek() == '"';
    if (read_file_name() == 0) error_end(no_file);
    const int next = skip_blanks_peek();
    if (quoted || next == ';' || next == 0) return type;
    if (is_sequence_type(token())) {
      type = token();
    } else if (!is_reserved_number(token())) {
      return type;
    }
  }
}

void read_fasta() {
  const std::string type = read_sequence_type("Must specify name of FASTA file");
  if (!hooks_of_language.read_fasta) error_end("Reading of FASTA files is not available yet");
  input_file file = opened_file(std::string(token()));
  hooks_of_language.read_fasta(type, file);
}

void read_newick() {
  if (read_file_name() == 0) error_end("Must specify name of file with Newick trees");
  if (!hooks_of_language.read_newick) error_end("Reading of Newick trees is not available yet");
  input_file file = opened_file(std::string(token()));
  hooks_of_language.read_newick(file);
}

void read_phylip() {
  const std::string type = read_sequence_type("Must specify name of PHYLIP file");
  if (!hooks_of_language.read_phylip) error_end("Reading of PHYLIP files is not available yet");
  input_file file = opened_file(std::string(token()));
  hooks_of_language.read_phylip(type, file);
}

// "| files", "|+ files".
void read_tps() {
  const bool add = accept_char('+');
  std::vector<std::string> names;
  while (read_file_name() > 0) names.emplace_back(token());
  if (names.empty()) error_end("Must specify name of TPS file");
  if (!hooks_of_language.read_tps) error_end("Reading of TPS files is not available yet");
  hooks_of_language.read_tps(names, add);
}

// At the level of the process arguments there is no file to end: "-" is the standard input there.
// In a file "/" and "-" end it where nothing but a blank or ";" follows; else they begin a name.
bool ends_file(int c) {
  if (c != '/' && c != '-') return false;
  if (at_end_of_word(true)) return true;
  unread_char();
  return false;
}

std::vector<std::string> read_arguments(const std::string& file) {
  std::size_t in_pool = 0;
  for (int level = 1; level <= input.top; ++level) {
    for (const std::string& text : input.frames[static_cast<std::size_t>(level)]->arguments) {
      in_pool += text.size() + 1;
    }
  }
  std::vector<std::string> arguments;
  while (read_item() > 0) {
    if (arguments.size() == most_arguments) {
      error_end_f("Too many arguments for %s (max.: %i)", file.c_str(),
                  static_cast<int>(most_arguments));
    }
    if (token().size() > longest_argument) error_end("Argument too long");
    in_pool += token().size() + 1;
    if (in_pool > argument_pool) error_end("String of arguments too long");
    arguments.emplace_back(token());
  }
  accept_char(';');
  return arguments;
}

void run_with_arguments(std::string file) {
  const std::vector<std::string> arguments = read_arguments(file);
  if (access(file.c_str(), R_OK) != 0 && !file.starts_with('/') && !input.run_directory.empty() &&
      access((input.run_directory + file).c_str(), R_OK) == 0) {
    file = input.run_directory + file;
  }
  push_file(file, arguments);
  if (!settings.report) return;
  emit("Running ", file, arguments.empty() ? " (with no arguments)" : " with arguments:");
  for (const std::string& text : arguments) emit(" ", text);
  emit("\n");
}

}  // namespace

// The formats that are told by how they begin take no letter before the name.
void read_commands_from(const std::string& name) {
  check_pushing(name);
  input_file file = opened_file(name);
  if (!file.is_terminal()) {
    check_encoding(file);
    const auto read_known_format = hooks_of_language.read_known_format;
    if (read_known_format && read_known_format(file)) return;
  }
  push_opened_file(std::move(file), {});
  if (!starts_as_nexus()) return;
  if (!hooks_of_language.read_nexus) error_end("Reading of NEXUS files is not available yet");
  hooks_of_language.read_nexus();
}

void procedure_command() {
  const int c = skip_blanks_peek();
  if (c == '-' && input.top == 0 && input.from_arguments && ends_file(c)) {
    read_commands_from("-");
  } else if (c == ';' || ends_file(c)) {
    no_timing();
    const auto end_item = hooks_of_language.macros.end_item;
    if (!end_item || !end_item()) pop_frame();
  } else if (accept_char('&')) {
    read_fasta();
  } else if (accept_char('[')) {
    read_newick();
  } else if (accept_char('!')) {
    read_phylip();
  } else if (accept_char('|')) {
    read_tps();
  } else {
    read_file_name();
    read_commands_from(std::string(token()));
  }
}

void run_command() {
  if (read_file_name() == 0) return pop_frame();
  run_with_arguments(std::string(token()));
}

void run_file_command() { run_with_arguments(std::string(token())); }

void mxproc_command() {
  no_timing();
  int n = 0;
  const bool given = read_optional_int(&n);
  expect_end();
  if (given) {
    if (n < 1 || n < input.top || n > most_input_files) {
      error_end("Cannot reset number of input files");
    }
    set_input_depth(n);
  }
  report_line("Max. number of input files is", input.mxproc);
}

}  // namespace zeb
