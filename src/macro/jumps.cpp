#include "macro/jumps.h"

#include <cctype>
#include <string_view>

#include "base/errors.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/bodies.h"
#include "macro/macro_state.h"
#include "macro/script_text.h"

namespace zeb {

namespace {

constexpr std::size_t longest_label = 124;
constexpr std::size_t longest_argument = 512;
constexpr std::size_t argument_pool = 2048;
constexpr std::size_t most_arguments = 32;

std::string lowered(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// Next word of a file in a label search, lower case; false at the end of the file. Quoted text is
// passed over.
bool next_search_word(int depth, std::string* word) {
  word->clear();
  for (;;) {
    if (input.top < depth || (input_ended() && skip_blanks_peek() == ';')) return false;
    const int c = read_raw_char();
    if (c > 32 && c != ';') {
      *word += static_cast<char>(std::tolower(c));
      break;
    }
  }
  for (;;) {
    const int c = peek_raw_char();
    if (c < 33 || c == ';' || word->size() > 2000) break;
    *word += static_cast<char>(std::tolower(read_raw_char()));
  }
  if (word->size() >= 2 && std::string_view("quote").starts_with(*word)) {
    while (peek_raw_char() != ';' && !(input.top < depth)) read_raw_char();
  }
  return true;
}

bool find_label(const std::string& label) {
  const reading_flag plain(&macro_reading::no_expansion);
  const int depth = input.top;
  const std::string sought = lowered(label);
  std::string word;
  while (next_search_word(depth, &word)) {
    if (word != "label") continue;
    if (!next_search_word(depth, &word)) return false;
    if (word == sought) return true;
  }
  return false;
}

std::string joined_arguments(const std::vector<std::string>& arguments) {
  std::string text;
  for (const std::string& argument : arguments) text += (text.empty() ? "" : " ") + argument;
  return text;
}

}  // namespace

void check_label(const std::string& label) {
  if (label.size() > longest_label) error_end("Label is too long");
}

std::vector<std::string> read_file_arguments(const std::string& file) {
  std::vector<std::string> arguments;
  std::size_t total = 0;
  while (read_item() > 0) {
    std::string argument(token());
    if (argument.size() > longest_argument) error_end("Argument too long");
    total += argument.size() + 1;
    if (total > argument_pool) error_end("String of arguments too long");
    if (arguments.size() == most_arguments) {
      error_end_f("Too many arguments for %s (max.: %i)", file.c_str(),
                  static_cast<int>(most_arguments));
    }
    arguments.push_back(std::move(argument));
  }
  return arguments;
}

void jump_to_label(const std::string& file, const std::string& label,
                   const std::vector<std::string>& arguments) {
  check_label(label);
  if (input.top > 0 && is_current_file(file) && top_frame().file.is_open()) {
    close_expansion();
    leave_bodies(macros.frames.back().bodies_at_entry);
    rewind_top_frame();
    if (!arguments.empty()) top_frame().arguments = arguments;
  } else if (const std::string* const text = input.top == 0 ? own_text(file) : nullptr) {
    close_expansion();
    leave_bodies(macros.frames.back().bodies_at_entry);
    restart_level_zero(*text);
  } else {
    push_file(file, arguments);
  }
  if (!find_label(label)) error_end_f("Label \"%s\" not found in %s", label.c_str(), file.c_str());
  if (settings.report) {
    emitf("Goto Label \"%s\" in %s%s", label.c_str(), file.c_str(),
          arguments.empty() ? " (no args.)"
                            : (" (args: " + joined_arguments(arguments) + ")").c_str());
  }
}

void run_error_target() { jump_to_label(input.error_target_file, input.error_target_label, {}); }

}  // namespace zeb
