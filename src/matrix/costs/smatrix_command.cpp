// `smatrix`: tables of costs that have names.
#include <algorithm>
#include <bit>
#include <string>
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
#include "matrix/commands.h"
#include "matrix/costs/cost_items.h"
#include "matrix/costs/cost_text.h"
#include "matrix/costs/feature_costs.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// States that can't be left for or reached from any other.
std::uint32_t isolated_states(const cost_table& costs) {
  std::uint32_t isolated = 0;
  for (std::uint32_t rest = costs.states; rest; rest &= rest - 1) {
    const std::size_t s = at(std::countr_zero(rest));
    bool all = !std::has_single_bit(costs.states);
    for (std::uint32_t others = costs.states; others; others &= others - 1) {
      const std::size_t t = at(std::countr_zero(others));
      all = all && (t == s ||
                    (costs.costs[s][t] >= forbidden_cost && costs.costs[t][s] >= forbidden_cost));
    }
    if (all) isolated |= std::uint32_t{1} << s;
  }
  return isolated;
}

std::string symbols_of(std::uint32_t states) {
  std::string text;
  for (std::uint32_t rest = states; rest; rest &= rest - 1)
    text += " " + states_text(entry_type(), rest & ~(rest - 1));
  return text;
}

void show_step_matrices() {
  bool any = false;
  for (std::size_t i = 0; i < matrix.step_matrices.size(); ++i) {
    const step_matrix& m = matrix.step_matrices[i];
    if (!m.costs) continue;
    any = true;
    emitf("Step-matrix %i (%s), states%s", static_cast<int>(i), m.name.c_str(),
          symbols_of(m.costs->states).c_str());
    emit_lines(" " + cost_items_text(*m.costs, 0, entry_type(), matrix.older_cost_format) + "\n");
    if (const std::uint32_t isolated = isolated_states(*m.costs))
      emit(" forbidding changes to/from state(s):\n ", symbols_of(isolated), "\n");
    for (int c = 0; c < matrix.nchar; ++c) {
      if (!matrix.characters[at(c)].is_sankoff || costs_set_for(c) != m.costs) continue;
      const bool named = at(c) < matrix.char_names.size() && !matrix.char_names[at(c)].name.empty();
      emitf("Char. %i%s", c, named ? text_of(" (%s)", character_name(c).c_str()).c_str() : "");
    }
  }
  if (!any) report_line("No step-matrices defined");
}

std::string read_matrix_name(int number) {
  if (!accept_char('(')) return text_of("StepMatrix_%i", number);
  std::string name;
  for (int c = read_char(); c != ')'; c = read_char()) {
    if (c == ';' || c < 0) error_end("Must use \"=N (name) costs;\" or \"+name chars.;\"");
    if (c > 32) name += static_cast<char>(c);
  }
  return name.empty() ? text_of("StepMatrix_%i", number) : name;
}

void define_step_matrix() {
  int number = -1;
  if (!read_optional_int(&number) || number < 0)
    error_end("Must use \"=N (name) costs;\" or \"+name chars.;\"");
  if (number >= most_step_matrices)
    error_end("Can't have more than", most_step_matrices, "step-matrices defined");
  std::string name = read_matrix_name(number);
  cost_table costs = costs_all_alike(1);
  apply_cost_items(read_cost_items(), 0, costs);
  if (costs.states == 0) costs.states = 3;  // only "* cost": two states at least
  set_step_matrix(number, {std::move(name), std::make_shared<const cost_table>(costs)});
}

bool is_defined(int number) {
  return number >= 0 && at(number) < matrix.step_matrices.size() &&
         matrix.step_matrices[at(number)].costs;
}

/// The first one whose name begins with the word; a whole name wins.
int find_by_prefix(const std::string& word) {
  if (const int whole = find_step_matrix(word); is_defined(whole)) return whole;
  int found = -1;
  bool ambiguous = false;
  for (int i = 0; i < static_cast<int>(matrix.step_matrices.size()); ++i) {
    if (!is_defined(i) || !is_prefix(word, matrix.step_matrices[at(i)].name)) continue;
    ambiguous = found >= 0;
    if (found < 0) found = i;
  }
  if (found < 0) error_end(word, "doesn't match any step-matrix name");
  if (ambiguous)
    warning_f("%s is an ambiguous abbreviation for a step matrix name\n\n  It will be taken as %s",
              word.c_str(), matrix.step_matrices[at(found)].name.c_str());
  return found;
}

void apply_step_matrix() {
  int number = -1;
  if (read_optional_int(&number)) {
    if (!is_defined(number)) error_end_f("No step-matrix number %i has been defined", number);
  } else {
    if (read_item() == 0) error_end("Must use \"=N (name) costs;\" or \"+name chars.;\"");
    number = find_by_prefix(std::string(token()));
  }
  std::vector<std::uint8_t> chosen(at(matrix.nchar), 0);
  if (!read_list(list_plain, 0, matrix.nchar, "character", chosen))
    error_end("Must specify character(s) to apply step-matrix");
  check_end();
  require_states(chosen);
  for (int c = 0; c < matrix.nchar; ++c)
    if (chosen[at(c)]) check_costs_fit(c, *matrix.step_matrices[at(number)].costs);
  for (int c = 0; c < matrix.nchar; ++c)
    if (chosen[at(c)]) use_step_matrix(c, number);
}

void combine_characters() {
  check_end();
  const std::vector<combined_character> combined = combine_features();
  if (combined.empty()) error_end("No active characters are named sup_name and sub_name");
  for (const combined_character& one : combined) {
    take_over(one);
    if (settings.report)
      emitf("Character %i stands for %i combinations of its states and those of%s, now inactive",
            one.controller, static_cast<int>(one.state_names.size()),
            numbers_text(one.controlled).c_str());
  }
}

}  // namespace

void smatrix_command() {
  no_timing();
  require_data("using step-matrices");
  if (!matrix.costs_allowed)
    error_end("Sankoff costs have been disabled (use \"cost >;\" to enable)");
  switch (skip_blanks_peek()) {
    case ';':
      return show_step_matrices();
    case '*':
      next_nonblank();
      check_end();
      return emit_lines(step_matrices_as_commands());
    case '&':
      next_nonblank();
      return combine_characters();
    case '=':
      next_nonblank();
      return define_step_matrix();
    case '+':
      next_nonblank();
      return apply_step_matrix();
    default:
      error_end("Must use \"=N (name) costs;\" or \"+name chars.;\"");
  }
}

}  // namespace zeb
