#include "parallel/tasks/instructions.h"

#include <algorithm>
#include <cctype>
#include <span>
#include <string_view>

#include "base/errors.h"
#include "console/output.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "macro/macro_language.h"
#include "macro/macro_values.h"
#include "macro/script_text.h"
#include "macro/text_scanner.h"
#include "parallel/tasks/task_state.h"

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

/// The instructions from where they are read.
class rest_of_instructions : public scanned_text {
 public:
  int get() override { return level_zero_ended() ? -1 : plain_read_char(); }
  const char* rest() const override { return input.read_position; }
};

bool is_any_of(std::string_view word, std::span<const std::string_view> words) {
  return std::ranges::find(words, word) != words.end();
}

/// Reads on up to and over `tagset` with that number, but not within a loop or in what is for tasks
/// of this task.
bool find_tag(int wanted) {
  constexpr std::string_view opening[] = {"loop",     "sprit",    "tbrit",    "bandb",
                                          "forfiles", "travtree", "iterrecs", "combine"};
  constexpr std::string_view closing[] = {"stop", "endtrav", "endrecs", "endcomb"};
  rest_of_instructions text;
  text_scanner scanner(text);
  int depth = 0;
  int begun = 0;  // instructions for tasks of this task
  std::string before;
  for (std::string_view word = scanner.next(); !word.empty(); word = scanner.next()) {
    if (is_any_of(word, opening)) ++depth;
    if (is_any_of(word, closing)) --depth;
    if (begins_instructions(before, word)) ++begun;
    if (word == "return" && begun > 0) --begun;
    before = word;
    double number = -1;
    const bool is_tag = depth == 0 && begun == 0 && word.size() > 2 && is_prefix(word, "tagset");
    if (!is_tag || !plain_read_value(&number, nullptr) || static_cast<int>(number) != wanted)
      continue;
    for (int c = ' '; c != ';' && !level_zero_ended();) c = plain_read_char();
    return true;
  }
  return false;
}

double read_returned_value() {
  if (skip_blanks_peek() == ';') error_end("P-ZEB: \"return value\" needs a number");
  return macro_value();
}

}  // namespace

bool begins_instructions(std::string_view before, std::string_view next) {
  return before.size() > 1 && is_prefix(before, "pzeb") &&
         (is_prefix(next, "begin") || is_prefix(next, "again"));
}

void begin_instructions(const std::string& text) {
  restart_level_zero(text);
  go_on_with_main_loop();
}

bool skip_to_wanted_tag() {
  if (task.wanted_tag < 0) return true;
  reset_script_text();
  leave_all_bodies();
  if (task.wanted_back) begin_instructions(task.instructions);
  const bool found = find_tag(task.wanted_tag);
  if (found) task.tag = task.wanted_tag;
  task.wanted_tag = -1;
  task.wanted_back = false;
  return found;
}

void read_return() {
  constexpr std::string_view words[] = {"trees",   "text",   "value",   "tgroups",   "polytree",
                                        "notrees", "notext", "novalue", "notgroups", "nopolytree"};
  constexpr int kinds = 5;
  constexpr int unknown_keyword = -1;
  constexpr int polytree_word = 4;
  return_options wanted;
  bool any = false;
  while (skip_blanks_peek() != ';') {
    const int found =
        read_word() > 0 || read_item() > 0 ? find_keyword(token(), words) : unknown_keyword;
    const bool on = found < kinds;
    // What is asked for takes the place of the default; what isn't wanted, or how, leaves it.
    const bool asks = found >= 0 && on && found != polytree_word;
    if (asks && !any) wanted.trees = false;
    any = any || asks;
    switch (found % kinds) {
      case 0:
        wanted.trees = on;
        break;
      case 1:
        wanted.text = on;
        break;
      case 2:
        wanted.value_given = on;
        if (on) wanted.value = read_returned_value();
        break;
      case 3:
        wanted.groups = on;
        break;
      case 4:
        wanted.polytree = on ? polytree_wish::yes : polytree_wish::no;
        break;
      default:
        emit("Unrecognized keyword in return command: ", token(), " (ignored)\n");
    }
  }
  read_char();
  task.to_return = wanted;
  task.at_return = true;
}

void run_last_return() {
  const bool failed = task.failed;
  const std::string text = last_return(task.instructions);
  if (text.empty()) return;
  begin_instructions(text);
  // What "goto [" names for errors comes first.
  while (!task.at_return && interpreter.running && !level_zero_ended()) run_one_round();
  task.failed = failed;
}

}  // namespace zeb
