// `ccode` and `ckeep`: type of optimisation, weight, activity and extra steps of characters.
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/character_steps.h"
#include "matrix/commands.h"
#include "matrix/matrix.h"
#include "matrix/settings/character_settings.h"
#include "matrix/settings/sankoff_lock.h"

namespace zeb {
namespace {

constexpr int most_internal_steps = 100;

/// A "(" is a specifier here, also where the macro language would make it an expression.
bool starts_characters(int c) { return c != '(' && starts_list_item(c); }

/// Reads one `ccode` command: specifiers, which stay in force, and lists that they apply to.
class ccode_reader {
 public:
  ccode_reader() : flags_(at(matrix.nchar)), changed_(at(matrix.nchar)) {}

  void read() {
    for (int c = skip_blanks_peek(); c != ';'; c = skip_blanks_peek()) {
      if (starts_characters(c)) {
        read_characters();
        unused_ = false;
      } else {
        read_char();
        read_specifier(c);
        unused_ = c != '*' && c != '!';
      }
    }
    if (unused_) warning("No characters after the last code of ccode: it changes nothing");
    if (settings.report) summarise_settings(changed_, mentioned_);
  }

 private:
  void read_specifier(int c) {
    // "@B" holds for one list, and this is where that list ends.
    if (block_used_) block_ = 0;
    block_used_ = false;
    switch (c) {
      case '+':
      case '-':
        wanted_.additive = c == '+';
        return;
      case '[':
      case ']':
        wanted_.active = c == '[';
        return;
      case '(':
        require_free_sankoff();
        require_cost_tables();
        wanted_.sankoff = true;
        return;
      case ')':
        require_free_sankoff();
        wanted_.sankoff = false;
        return;
      case '/':
        wanted_.weight = read_weight();
        return;
      case '=':
        wanted_.internal_steps = read_internal_steps();
        return;
      case '*':
        wanted_ = {};
        return;
      case '@':
        block_ = read_block_reference(find_list_kind("character"));
        return;
      case '!':
        restore_kept_settings();
        changed_.assign(changed_.size(), 1);
        mention(
            {.additive = true, .active = true, .sankoff = true, .weight = 1, .internal_steps = 0});
        return;
      default:
        error_end("Error in ccode: illegal character found", static_cast<char>(c));
    }
  }

  static void require_cost_tables() {
    if (!matrix.costs_allowed) {
      error_end("Sankoff characters have been disabled (use \"cost >;\" to enable)");
    }
  }

  static int read_weight() {
    double weight = 0;
    bool expression = false;
    const int c = skip_blanks_peek();
    if (c == ';' || !read_value(&weight, &expression)) {
      error_end("Error in ccode: can't give weight without a number");
    }
    if (expression) weight = std::trunc(weight);
    if (weight != std::floor(weight) || weight < 0 || weight > largest_weight) {
      error_end("Error in ccode: can't give weight", text_of("%.10g", weight),
                "(an integer from 0 to", largest_weight, "is needed)");
    }
    return static_cast<int>(weight);
  }

  static int read_internal_steps() {
    int steps = -1;
    if (!read_optional_int(&steps) || steps < 0) {
      error_end("Error in ccode: can't give internal steps without a number");
    }
    if (steps > most_internal_steps) {
      error_end("Internal steps can be set to a maximum of", most_internal_steps);
    }
    return steps;
  }

  void read_characters() {
    std::fill(flags_.begin(), flags_.end(), std::uint8_t{0});
    list_reader list(list_slash_ends, 0, matrix.nchar, find_list_kind("character"), flags_);
    list.enter_block(block_);
    for (int c = skip_blanks_peek(); starts_characters(c); c = skip_blanks_peek()) {
      list.read_item_at(c);
    }
    block_used_ = true;
    mention(wanted_);
    for (int c = 0; c < matrix.nchar; ++c) {
      if (!flags_[at(c)]) continue;
      change_character(c, wanted_);
      changed_[at(c)] = 1;
    }
  }

  void mention(const character_change& change) {
    if (change.additive) mentioned_.additive = change.additive;
    if (change.active) mentioned_.active = change.active;
    if (change.sankoff) mentioned_.sankoff = change.sankoff;
    if (change.weight) mentioned_.weight = change.weight;
    if (change.internal_steps) mentioned_.internal_steps = change.internal_steps;
  }

  character_change wanted_;
  character_change mentioned_;  // settings that the command has set, whatever to
  std::vector<std::uint8_t> flags_;
  std::vector<std::uint8_t> changed_;  // for the summary
  int block_ = 0;                      // of "@B"; 0 none
  bool block_used_ = false;
  bool unused_ = false;  // no list has followed the last specifier yet
};

}  // namespace

void ccode_command() {
  no_timing();
  require_data("changing character settings");
  if (skip_blanks_peek() == ';') return show_character_table();
  ccode_reader().read();
}

void ckeep_command() {
  no_timing();
  require_data("storing ccode");
  check_end();
  keep_settings();
}

void xinact_command() {
  require_data("deactivating uninformative characters");
  check_end();
  recheck_steps();
  int count = 0;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!matrix.characters[at(c)].active || is_informative(c)) continue;
    change_character(c, {.active = false});
    ++count;
  }
  report_line(count, "uninformative characters are inactive");
}

}  // namespace zeb
