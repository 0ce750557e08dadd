#include "language/completion.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "base/command.h"
#include "language/hooks.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"

namespace zeb {
namespace {

constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::string_view blanks = " \t";
// What stands before the name of a file in one command or another.
constexpr std::string_view signs_of_files = "=*+&![";

std::vector<std::string> commands_with(std::string_view beginning) {
  std::vector<std::string> names;
  for (const command_row& row : command_table()) {
    if (row.name[0] == '\n' && !macros_on()) break;
    if (is_prefix(beginning, row.name)) names.emplace_back(row.name);
  }
  return names;
}

// "no" forms come only when the "no" has been typed, so that they don't double the list.
std::vector<std::string> options_with(const command_row& row, std::string_view beginning) {
  std::vector<std::string> words;
  for (const option_table* table = row.options; table; table = table->next) {
    for (const option_row& option : table->rows) {
      if (option.keyword.size() < 2) continue;
      const std::string word(option.keyword);
      if (beginning.empty() || is_prefix(beginning, word)) words.push_back(word);
      if (option.negatable && beginning.size() >= 2 && is_prefix(beginning, "no" + word)) {
        words.push_back("no" + word);
      }
    }
  }
  return words;
}

// Names that can't be typed as they stand aren't offered; those of directories end in "/".
std::vector<std::string> files_with(std::string_view beginning) {
  const std::size_t slash = beginning.rfind('/');
  const std::string folder(slash == beginning.npos ? "" : beginning.substr(0, slash + 1));
  const std::string_view name = beginning.substr(folder.size());
  std::vector<std::string> found;
  std::error_code fault;
  const std::filesystem::path where = folder.empty() ? "." : folder;
  for (std::filesystem::directory_iterator at(where, fault), end; !fault && at != end;
       at.increment(fault)) {
    const std::string file = at->path().filename().string();
    const bool typable = std::all_of(file.begin(), file.end(), [](unsigned char c) {
      return c > 32 && c != 127 && c != ';' && c != ',';
    });
    if (!typable || !file.starts_with(name) || (name.empty() && file[0] == '.')) continue;
    std::error_code unknown_kind;
    found.push_back(folder + file + (at->is_directory(unknown_kind) ? "/" : ""));
  }
  std::sort(found.begin(), found.end());
  return found;
}

completion complete_file(std::string_view text, std::size_t begin) {
  for (; begin <= text.size(); ++begin) {
    completion found{begin, files_with(text.substr(begin))};
    if (!found.words.empty() || begin == text.size()) return found;
    if (signs_of_files.find(text[begin]) == signs_of_files.npos) break;
  }
  return {};
}

std::size_t after_last(std::string_view text, std::string_view signs) {
  return text.find_last_of(signs) + 1;  // `npos` + 1 is 0
}

completion complete_argument(const command_row& row, std::string_view text) {
  const std::size_t begin = text.find_last_not_of(letters) + 1;
  completion found{begin, options_with(row, text.substr(begin))};
  if (!found.words.empty()) return found;
  return complete_file(text, after_last(text, blanks));
}

}  // namespace

completion complete_line(std::string_view before_cursor) {
  const std::size_t command_begin = after_last(before_cursor, ";,");
  const std::string_view text = before_cursor.substr(command_begin);
  const std::size_t word = std::min(text.find_first_not_of(blanks), text.size());
  const std::size_t word_end = std::min(text.find_first_not_of(letters, word), text.size());
  const std::string_view first = text.substr(word, word_end - word);
  completion found;
  if (word_end == text.size()) {
    found = {word, commands_with(first)};
  } else {
    // Offered in small letters, as words are read; a command that isn't known takes files.
    std::string folded(first);
    for (char& c : folded) c = static_cast<char>(c | 0x20);
    const command_row* row = find_command(folded);
    const std::string_view rest = text.substr(word_end);
    found = row ? complete_argument(*row, rest) : complete_file(rest, after_last(rest, blanks));
    found.begin += word_end;
  }
  found.begin += command_begin;
  return found;
}

}  // namespace zeb
