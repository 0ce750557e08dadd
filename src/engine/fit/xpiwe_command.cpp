// `xpiwe`: implied weights that differ between characters.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "engine/commands.h"
#include "engine/fit/weighting_set_items.h"
#include "engine/fit/weighting_set_report.h"
#include "engine/fit/weighting_settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/toggles.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr double largest_concavity = 1000;

/// What all changes ask for first.
void check_data(const char* refusal) {
  require_data("using extended implied weighting");
  if (!weighting.data_allow) error_end(refusal);
}
void check_data_for_sets() {
  check_data("For extended implied weighting, read data with implied weighting ON");
}

// ---- state ----

void show_sets() {
  if (!settings.report) return;
  const int sets = weighting_set_count();
  if (sets > 0) emitf("Sets: %i sets for group-weighting defined", sets);
  if (!has_constant_weights()) return;
  int constant = 0;
  int active = 0;
  for (int c = 0; c < matrix.nchar; ++c) {
    active += matrix.characters[at(c)].active;
    constant += matrix.characters[at(c)].active && weighting.has_constant[at(c)];
  }
  emitf("Sets: %i characters of constant weight, %i characters of variable weights", constant,
        active - constant);
  if (active == constant)
    warning(
        "All active characters are of constant weight.\nThis is an inefficient way to find "
        "trees\nof minimum-length under equal weights");
}

void show_missing_rule() {
  if (!settings.report) return;
  const missing_entry_rule& rule = weighting.missing;
  if (!rule.on) return;
  if (rule.share == 0) return report_line("Missing entries will be assumed to have NO homoplasy");
  emitf(
      "Missing entries will be assumed to have %.1f%% the homoplasy of \nobserved entries; "
      "homoplasy in no character will be \nincreased beyond %.3f times observed homoplasy",
      100 * rule.share, rule.most_ratio);
}

void show_state() {
  show_toggle(weighting.extended, "Extended implied weighting");
  show_sets();
  show_missing_rule();
  if (!settings.report) return;
  if (has_own_concavities())
    report_line("Will use individual concavities for implied weights analyses");
  else
    report_line("Using a single weighting function for all characters");
}

void switch_on() {
  check_end();
  check_data("To use extended implied weighting, must read the data with implied weighting ON");
  set_extended_weighting(true);
  show_state();
}

void switch_off() {
  check_end();
  set_extended_weighting(false);
  show_toggle(false, "Extended implied weighting");
}

/// After sets or concavities were taken away.
void switch_off_if_moot() {
  if (!weighting.extended || has_extended_weighting()) return;
  set_extended_weighting(false);
  if (settings.report) report_line("Turning extended implied weighting OFF (no longer needed)");
}

// ---- sets ----

void make_weights_constant() {
  check_data_for_sets();
  int steps = 0;
  if (!read_optional_int(&steps) || steps < 0)
    error_end("Expected number of steps to equate with constant-weight characters");
  double factor = 1;
  const int next = skip_blanks_peek();
  if (next == 'x' || next == 'X') {
    read_char();
    if (!read_optional_float(&factor) || !(factor > 0))
      error_end("Expected factor, greater than 0");
  }
  const std::vector<std::uint8_t> characters = read_character_list("No characters in list");
  check_end();
  for (int c = 0; c < matrix.nchar; ++c)
    if (characters[at(c)] && !weighting.set_of.empty() && weighting.set_of[at(c)] >= 0)
      error_end("Sub-sets must be mutually exclusive");
  set_constant_weight(characters, steps, factor);
  set_extended_weighting(true);
  show_sets();
}

void define_sets() {
  check_data_for_sets();
  set_weighting_sets(read_weighting_sets());
  set_extended_weighting(true);
  show_sets();
}

void make_sets_of_blocks() {
  check_data_for_sets();
  check_end();
  set_weighting_sets(weighting_sets_of_blocks());
  set_extended_weighting(true);
  show_sets();
}

void clear_sets() {
  check_data_for_sets();
  std::vector<std::uint8_t> characters(at(matrix.nchar), 1);
  const bool all = skip_blanks_peek() == ';';
  if (!all) characters = read_character_list("No characters in list");
  check_end();
  leave_weighting_sets(characters);
  if (all && settings.report) report_line("Clearing weighting sets");
  if (!all) show_sets();
  switch_off_if_moot();
}

void write_commands() {
  require_data("writing weighting sets");
  check_end();
  for (const std::string& command : extended_weighting_as_commands()) emit(command, ";\n");
}

void report_sets() {
  require_data("showing weighting sets");
  report_weighting_sets();
}

// ---- concavities ----

constexpr const char* bad_rule =
    "Factor f for predicting homoplasy in missing entries must be 0 <= f <= 1\n"
    "and base k must be 0 < k <= 1000";

/// "P<M/K", each of which may be left out.
void extrapolate(bool matches_costs) {
  missing_entry_rule rule;
  rule.on = true;
  rule.matches_costs = matches_costs;
  double k = weighting.concavity;
  read_optional_float(&rule.share);
  if (accept_char('<') && (!read_optional_float(&rule.most_ratio) || !(rule.most_ratio >= 1)))
    error_end("Maximum proportion must be >= 1");
  if (accept_char('/') && !read_optional_float(&k)) error_end(bad_rule);
  check_end();
  if (!(rule.share >= 0 && rule.share <= 1 && k > 0 && k <= largest_concavity)) error_end(bad_rule);
  set_concavity(k);
  extrapolate_to_missing(rule);
  set_extended_weighting(true);
  show_missing_rule();
}

struct given_concavity {
  std::vector<std::uint8_t> characters;
  double k;
};

/// "list/K", as often as there are lists.
std::vector<given_concavity> read_concavities() {
  std::vector<given_concavity> all;
  do {
    given_concavity given;
    given.characters =
        read_character_list(skip_blanks_peek() == ';' || skip_blanks_peek() == '/'
                                ? "Must provide list of characters to apply a k value..."
                                : "No characters in list");
    if (!accept_char('/') || !read_optional_float(&given.k) || !(given.k > 0) ||
        given.k > largest_concavity)
      error_end("Individual k values must be 0 < k <= 1000");
    all.push_back(std::move(given));
  } while (skip_blanks_peek() != ';');
  return all;
}

void set_concavities() {
  const std::vector<given_concavity> all = read_concavities();
  const bool first = !has_own_concavities();
  for (const given_concavity& given : all) {
    set_own_concavity(given.characters, given.k);
    const auto count = std::count(given.characters.begin(), given.characters.end(), 1);
    if (settings.report)
      emitf("Set concavity for %i character(s) to %.6f", static_cast<int>(count), given.k);
  }
  const auto unset = std::count(weighting.own_concavity.begin(), weighting.own_concavity.end(), 0);
  if (settings.report && first && unset > 0)
    emitf("(note: set concavity for %i previously unset characters to default)",
          static_cast<int>(unset));
  set_extended_weighting(true);
}

void define_concavities() {
  check_data("To define multiple K values, data must be read with implied weighting ON");
  if (accept_char('*'))
    extrapolate(false);
  else if (accept_char('='))
    extrapolate(true);
  else
    set_concavities();
  if (settings.report) report_line("Will use individual concavities for implied weights analyses");
}

void use_one_function() {
  check_end();
  clear_own_concavities();
  if (settings.report) report_line("Using a single weighting function for all characters");
  switch_off_if_moot();
}

}  // namespace

void xpiwe_command() {
  no_timing();
  const int sign = skip_blanks_peek();
  if (sign == ';') return show_state();
  const auto option = [](int c) -> void (*)() {
    switch (c) {
      case '=':
        return switch_on;
      case '-':
        return switch_off;
      case '/':
        return make_weights_constant;
      case '[':
        return define_sets;
      case ']':
        return make_sets_of_blocks;
      case '!':
        return clear_sets;
      case '*':
        return write_commands;
      case '&':
        return report_sets;
      case '(':
        return define_concavities;
      case ')':
        return use_one_function;
      default:
        return nullptr;
    }
  }(sign);
  if (!option) return check_end();
  next_nonblank();
  const bool only_shows = sign == '*' || sign == '&';
  if (capacity_scopes() > 0 && !only_shows)
    error_end("Cannot change set definitions or k's within sectorial searches!");
  option();
}

}  // namespace zeb
