#include "parallel/tasks/instructions.h"

#include <algorithm>
#include <cctype>

#include "base/errors.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "parallel/tasks/task.h"

namespace zeb {
namespace {

/// The last command `return` of a text; empty: there is none.
std::string last_return(const std::string& text) {
  std::string lower = text;
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const std::size_t at = lower.rfind("return");
  return at == text.npos ? std::string() : text.substr(at);
}

/// One command that isn't run. True: it was the `tagset` wanted.
bool skip_command() {
  const bool is_tag = read_word() > 0 && is_prefix(token(), "tagset") && token().size() > 1;
  bool wanted = false;
  if (is_tag) {
    double number = -1;
    wanted = plain_read_value(&number, nullptr) && static_cast<int>(number) == task.wanted_tag;
    if (wanted) task.tag = task.wanted_tag;
  }
  int c = 0;
  do {
    c = plain_read_char();
  } while (c != ';' && !level_zero_ended());
  return wanted;
}

}  // namespace

void begin_instructions(const std::string& text) {
  restart_level_zero(text);
  go_on_with_main_loop();
}

bool skip_to_wanted_tag() {
  if (task.wanted_tag < 0) return true;
  if (task.wanted_back) begin_instructions(task.instructions);
  bool found = false;
  while (!found && !level_zero_ended()) {
    const int c = plain_read_char();
    if (c < 33 || c == ';') continue;
    plain_unread_char();
    found = skip_command();
  }
  task.wanted_tag = -1;
  task.wanted_back = false;
  return found;
}

void run_last_return() {
  const bool failed = task.failed;
  const std::string text = last_return(task.instructions);
  if (text.empty()) return;
  begin_instructions(text);
  run_one_round();
  task.failed = failed;
}

}  // namespace zeb
