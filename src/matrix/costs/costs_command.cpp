// `costs`: what changes between states cost.
#include <algorithm>
#include <bit>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "language/lists.h"
#include "matrix/commands.h"
#include "matrix/costs/character_costs.h"
#include "matrix/costs/cost_items.h"
#include "matrix/costs/cost_text.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

void allow_costs(bool allowed) {
  if (allowed != matrix.costs_allowed && matrix.present)
    error_end("Whether to allow sankoff must be changed before reading data");
  check_end();
  matrix.costs_allowed = allowed;
  if (settings.report) report_line("Sankoff costs are", allowed ? "enabled" : "disabled");
}

void set_relative_fits(bool exact) {
  check_end();
  matrix.exact_relative_fits = exact;
  if (settings.report)
    report_line("Relative fit differences of asymmetric characters are",
                exact ? "calculated exactly" : "not calculated exactly");
}

void set_format(bool older) {
  check_end();
  matrix.older_cost_format = older;
  if (settings.report)
    report_line(older ? "Saving costs in the older format" : "Saving costs in ZEB format");
}

void save_costs(bool active_only) {
  require_data("saving costs");
  check_end();
  std::vector<int> numbers(at(matrix.nchar), -1);
  for (int c = 0; c < matrix.nchar; ++c)
    if (!active_only || matrix.characters[at(c)].active) numbers[at(c)] = c;
  emit_lines(costs_as_commands(numbers));
}

void show_costs() {
  require_data("showing costs");
  bool any = false;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!matrix.characters[at(c)].is_sankoff) continue;
    any = true;
    emit_lines(costs_as_table(c));
  }
  if (!any) report_line("No characters with costs");
}

void define_costs() {
  require_data("defining costs");
  if (!matrix.costs_allowed)
    error_end("Sankoff costs have been disabled (use \"cost >;\" to enable)");
  std::vector<std::uint8_t> chosen(at(matrix.nchar), 0);
  if (!read_list(list_plain, 0, matrix.nchar, "character", chosen))
    error_end("Error: found symbol", static_cast<char>(skip_blanks_peek()),
              "when reading transformation costs");
  if (!accept_char('=')) error_end("Scope must be followed by costs");
  require_states(chosen);
  const std::vector<cost_item> items = read_cost_items();
  std::vector<std::pair<int, shared_costs>> made;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!chosen[at(c)]) continue;
    const shared_costs former = costs_set_for(c);
    cost_table costs = former ? *former : costs_all_alike(1);
    apply_cost_items(items, states_in_cells(c), costs);
    const auto same =
        std::find_if(made.begin(), made.end(), [&](const auto& m) { return *m.second == costs; });
    made.emplace_back(
        c, same == made.end() ? std::make_shared<const cost_table>(costs) : same->second);
  }
  for (auto& [c, costs] : made) set_costs(c, std::move(costs));
}

}  // namespace

void costs_command() {
  no_timing();
  switch (skip_blanks_peek()) {
    case ';':
      return show_costs();
    case '<':
    case '>':
      return allow_costs(next_nonblank() == '>');
    case '&':
    case '|':
      return set_relative_fits(next_nonblank() == '&');
    case '[':
    case ']':
      return set_format(next_nonblank() == ']');
    case '*':
    case '-':
      return save_costs(next_nonblank() == '-');
    default:
      define_costs();
  }
}

}  // namespace zeb
