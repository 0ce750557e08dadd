// Any text run as a script of the macro language ends, and leaves variables, loops and the reader
// able to go on.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "command_table.h"
#include "fuzz/scratch_folder.h"
#include "language/interpreter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

// The commands of the language, but for those that can go round for ever by their nature.
std::span<const zeb::command_row> macro_rows() {
  static std::vector<zeb::command_row> rows;
  bool of_language = false;
  for (const zeb::command_row& row : zeb::all_commands()) {
    rows.push_back(row);
    const std::string_view name = row.name;
    of_language = of_language || name == "\nMACROS:";
    const bool endless = name == "goto" || name == "setloop" || name == "recurse";
    if ((!of_language && name != "quote" && name != "rseed") || endless)
      rows.back().handler = nullptr;
  }
  return rows;
}

// Loops are kept short: no number in the text has more than one digit.
std::string with_short_numbers(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const bool digit = c >= '0' && c <= '9';
    const bool after_digit = !result.empty() && result.back() >= '0' && result.back() <= '9';
    if (!digit || !after_digit) result += c;
  }
  return result;
}

// Rounds of nested loops multiply. "loo" is the shortest word for a loop.
int loop_words(std::string_view text) {
  int found = 0;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if ((text[i] | 32) == 'o' && (text[i - 1] | 32) == 'o') ++found;
  }
  return found;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  zeb_test::start_in_scratch_folder(macro_rows);
  if (size == 0 || size > 1500) return 0;
  static constexpr const char* settings[] = {"", "macfloat -;", "macro prot 0;", "macro prot 1;"};
  zeb_test::run_program(std::string("macro-; macfloat =; macro prot 2;") + settings[data[0] & 3] +
                        "macro=;");
  const std::string text = with_short_numbers({reinterpret_cast<const char*>(data) + 1, size - 1});
  if (loop_words(text) > 3) return 0;
  zeb_test::run_program("var: x y a[5] b[5] m[2 3] d[2 2 2] s[9]; set s $hello;" + text);
  zeb_test::run_program("macro=;");  // the text may have turned the language off
  if (zeb_test::run_program("set 0 7; quote alive '0';").find("alive 7") == std::string::npos)
    std::abort();
  return 0;
}
