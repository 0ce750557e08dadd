// `piwe`: implied weights, and the function by which homoplasy costs.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "engine/commands.h"
#include "engine/fit/fit_rules.h"
#include "engine/fit/weighting_settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/toggles.h"
#include "matrix/matrix.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr double strongest = 1e-5;
constexpr double weakest = 1000;

void show_weighting() {
  show_toggle(weighting.on, "Implied weighting");
  if (!settings.report || !weighting.on) return;
  if (!weighting.user_costs.empty()) report_line("Weighting with user-defined weighting function");
  const bool several = weighting.extended && has_own_concavities();
  if (weighting.user_costs.empty() || several)
    emitf("Weighting strength is %.5f%s", weighting.concavity, several ? " (reference K)" : "");
}

/// "=N": without a number, with the concavity there is.
void switch_on() {
  double k = weighting.concavity;
  read_optional_float(&k);
  check_end();
  if (!(k > 0)) error_end("Weighting strength must be more than 0");
  if (k >= weakest) error_end("Weighting strength must be less than 1000");
  set_concavity(k);
  set_implied_weights(true);
  show_weighting();
}

void switch_off() {
  check_end();
  set_implied_weights(false);
  show_weighting();
}

// ---- concavities by what steps cost ----

/// Where the first step costs `range` times what the one after `steps` does: the positive root of
/// (k + N) (k + N + 1) = R k (k + 1).
double concavity_for_range(double range, double steps) {
  const double c = 1 / range;
  const double e = c - 1;
  const double b = 2 * c * steps + c - 1;
  return (-b - std::sqrt(b * b - (steps * steps * c + steps * c) * 4 * e)) / (2 * e);
}

void set_range() {
  double range = 0;
  if (!read_optional_float(&range) || range == 1)
    error_end("Expected maximum weight range (larger than 1).");
  if (!(range > 1))
    error_end(
        "Expected maximum weight range (larger than 1).\nBelow 1, characters would weigh more with "
        "more homoplasy");
  int steps = -1;
  if (read_optional_int(&steps)) {
    if (steps < 1) error_end("Number of steps of homoplasy must be 1 or more");
  } else {
    require_data("setting a range of weights");
    steps = std::max(1, most_extra_steps() - 2);
  }
  check_end();
  const double k = concavity_for_range(range, steps);
  if (k >= strongest && k <= weakest) {
    set_concavity(k);
    if (settings.report)
      emitf("Concavity set to %.6f (%g steps of homoplasy downweight a step %g times)", k,
            static_cast<double>(steps), range);
    return;
  }
  set_concavity(k > weakest ? weakest : strongest);
  if (k > weakest)
    emit("Note: Concavity for requested range is too high;\n",
         "      will set concavity to 1000 (maximum)\n");
  else
    emit("Concavity for requested range is too small;\n",
         "will set concavity to 10e-6 (minimum)\n");
  warning("requested weight ratios only approximated");
}

void show_step_cost() {
  if (!data_in_memory()) error_end("Cannot report value of first step of homoplasy without data");
  int steps = 0;
  read_optional_int(&steps);
  check_end();
  if (steps < 0) error_end("Number of steps of homoplasy must be 0 or more");
  if (steps > 0 && steps >= most_extra_steps())
    error_end("Maximum expected homoplasy is", most_extra_steps());
  const std::string cost = text_of("%.5f", general_step_cost(steps));
  if (steps == 0)
    report_line("Absolute cost of first step of homoplasy:", cost);
  else
    emitf("Absolute cost of %i steps of homoplasy: %s", steps, cost.c_str());
}

// ---- the user's function ----

void check_user_function() {
  require_data("defining a weighting function");
  if (!weighting.data_allow)
    error_end("To define a user weighting function, data must be read with implied weighting ON");
  if (!weighting.on) error_end("Sorry, cannot define user-function for the present settings");
  check_characters_of_user_function();
}

std::vector<double> read_user_costs() {
  std::vector<double> costs;
  double cost = 0;
  while (read_optional_float(&cost)) {
    if (!(cost >= 0)) error_end("Value of weight must be >= 0 (weighting function unchanged)");
    costs.push_back(cost);
  }
  check_end();
  return costs;
}

void list_user_costs() {
  if (weighting.user_costs.empty()) return report_line("No user-defined weighting function");
  report_line("Weighting with user-defined weighting function");
  print_table("Costs of extra steps (first, second...)", weighting.user_costs);
}

void define_user_costs() {
  if (skip_blanks_peek() == ';') return list_user_costs();
  if (capacity_scopes() > 0)
    error_end("When running sectors, weighting function can't be redefined...");
  check_user_function();
  std::vector<double> costs = read_user_costs();
  const int given = static_cast<int>(costs.size());
  const int possible = most_extra_steps();
  if (given < possible)
    emitf(
        "Data can have up to %i extra-steps; only %i values defined\n"
        "Values for %i-%i extra steps will be set as for %i extra steps",
        possible, given, given + 1, possible, given);
  set_user_costs(std::move(costs));
  show_weighting();
}

void clear_user_costs() {
  check_end();
  set_user_costs({});
  show_weighting();
}

// ---- reports by character ----

void show_functions() {
  require_data("showing weighting functions");
  const fit_rules rules = current_fit_rules();
  if (!weighting.extended || !has_own_concavities())
    return report_line("Using a single weighting function for all characters");
  std::vector<double> values(at(matrix.nchar), no_fraction);
  for (int c = 0; c < matrix.nchar; ++c)
    if (matrix.characters[at(c)].active && rules.functions[at(c)].kind != fit_function::form::line)
      values[at(c)] = rules.functions[at(c)].parameter;
  print_table(rules.user.empty() ? text_of("Character concavities (base: %.5f)", rules.concavity)
                                 : "Character shifts (shift in user-defined weighting-function)",
              values);
}

/// What a step costs by the extra steps before it, against a first step; the one of the general
/// function where all cost the same.
void show_relative_costs(const fit_rules& rules, int character) {
  const fit_function& own = rules.functions[at(character)];
  const bool constant = own.kind == fit_function::form::line;
  const double unit = constant ? general_step_cost(0) : rules.fit(own, 1);
  const int steps = std::max(1, static_cast<int>(std::ceil(most_homoplasy(character))));
  std::vector<double> costs;
  for (int h = 0; h < steps; ++h)
    costs.push_back((rules.fit(own, h + 1) - rules.fit(own, h)) / unit);
  std::string title = text_of("For char. %i (k=%.5f)", character, own.parameter);
  if (constant) title = text_of("For char. %i (fixed cost)", character);
  if (own.kind == fit_function::form::table)
    title = text_of("For char. %i (shift=%.5f)", character, own.parameter);
  print_table(title, costs);
}

void show_step_costs(const std::vector<std::uint8_t>& characters) {
  const fit_rules rules = current_fit_rules();
  report_line("Relative cost of adding a step for different numbers of extra-steps");
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!characters[at(c)]) continue;
    const character_record& record = matrix.characters[at(c)];
    if (!record.active)
      emitf("For char. %i (inactive)", c);
    else if (record.is_sankoff)
      emitf("(Skipping Sankoff char. %i)", c);
    else if (record.is_continuous)
      emitf("(Skipping continuous char. %i)", c);
    else
      show_relative_costs(rules, c);
  }
}

void show_by_character() {
  require_data("showing weighting functions");
  std::vector<std::uint8_t> characters(at(matrix.nchar), 0);
  const bool listed = read_list(list_plain, 0, matrix.nchar, "character", characters);
  check_end();
  if (listed)
    show_step_costs(characters);
  else
    show_functions();
}

}  // namespace

void piwe_command() {
  no_timing();
  switch (skip_blanks_peek()) {
    case ';':
      return show_weighting();
    case '=':
      next_nonblank();
      return switch_on();
    case '-':
      next_nonblank();
      return switch_off();
    case '+':
      error_end("Auto-weighted optimization is not available yet");
    case '<':
      next_nonblank();
      return set_range();
    case '|':
      next_nonblank();
      return show_step_cost();
    case '[':
      next_nonblank();
      return define_user_costs();
    case ']':
      next_nonblank();
      return clear_user_costs();
    case '&':
    case '(':
      next_nonblank();
      return show_by_character();
    default:
      check_end();
  }
}

}  // namespace zeb
