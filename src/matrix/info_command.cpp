// `info`: which characters are informative for the active taxa.
#include <string>
#include <vector>

#include "base/message_text.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/character_steps.h"
#include "matrix/commands.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

// "12 informative characters: 0 2 3", cut into lines.
void show_characters(const std::vector<int>& characters, const std::string& what) {
  std::string line =
      counted(static_cast<long long>(characters.size()), what + " character", what + " characters");
  if (!characters.empty()) line += ":";
  for (const int c : characters) {
    const std::string label = " " + character_label(c);
    if (line.size() + label.size() > 78) {
      emit(line, "\n");
      line = "  ";
    }
    line += label;
  }
  emit(line, "\n");
}

}  // namespace

void info_command() {
  require_data("showing informative characters");
  no_timing();
  std::vector<std::uint8_t> chosen(static_cast<std::size_t>(matrix.nchar), 0);
  const bool given = read_list(list_plain, 0, matrix.nchar, "character", chosen);
  expect_end();
  recheck_steps();
  std::vector<int> informative;
  std::vector<int> uninformative;
  std::vector<int> inactive;
  for (int c = 0; c < matrix.nchar; ++c) {
    const auto i = static_cast<std::size_t>(c);
    if (given && !chosen[i]) continue;
    if (!matrix.characters[i].active) {
      inactive.push_back(c);
    } else {
      (is_informative(c) ? informative : uninformative).push_back(c);
    }
  }
  show_characters(informative, "informative");
  show_characters(uninformative, "uninformative");
  if (!inactive.empty()) show_characters(inactive, "inactive");
}

}  // namespace zeb
