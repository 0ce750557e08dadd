// `cstree`: characters whose states form a tree.
#include <algorithm>
#include <bit>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/commands.h"
#include "matrix/costs/character_costs.h"
#include "matrix/costs/cost_items.h"
#include "matrix/costs/cost_text.h"
#include "matrix/costs/state_tree_diagram.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

void set_decomposition(bool decomposed) {
  check_end();
  if (matrix.decompose_state_trees != decomposed) drop_packed_data();
  matrix.decompose_state_trees = decomposed;
  if (settings.report)
    report_line("Character-state trees are optimized",
                decomposed ? "as binary variables" : "as wholes");
}

/// The text up to ";" (unread), as it stands.
std::string read_diagram() {
  std::string text;
  for (int c = peek_char(); c != ';'; c = peek_char()) {
    if (c < 0) error_end("Can't read character state tree: no semicolon");
    text += static_cast<char>(read_char());
  }
  return text;
}

std::string join_numbers(const std::vector<int>& numbers) {
  std::string text = numbers_text(numbers);
  return text.empty() ? text : text.substr(1);
}

void tell_state_trees(const std::vector<int>& characters) {
  std::vector<int> trees;
  std::vector<int> others;
  for (const int c : characters)
    (costs_of_character(c).edges.empty() ? others : trees).push_back(c);
  if (!others.empty())
    emit("Note: some costs (char. ", join_numbers(others),
         ") do not correspond to a character state tree;\nthose characters considered as "
         "sankoff.\n");
  if (settings.report && trees.size() > 1)
    emitf("Character(s) with character state tree(s)\n    %s", join_numbers(trees).c_str());
}

void define_state_trees() {
  if (!matrix.costs_allowed)
    error_end("Sankoff costs have been disabled (use \"cost >;\" to enable)");
  std::vector<std::uint8_t> chosen(at(matrix.nchar), 0);
  read_list(list_plain, 0, matrix.nchar, "character", chosen);
  require_states(chosen);
  const int sign = skip_blanks_peek();
  if (sign != '=' && sign != '<')
    error_end("Expected symbols '=' or '<' to finish list of characters");
  next_nonblank();
  int largest = 0;
  if (sign == '<' && (!read_optional_int(&largest) || largest < 1))
    error_end("Give maximum transformation cost (1 or more)");
  int highest = 0;
  std::vector<int> characters;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!chosen[at(c)]) continue;
    characters.push_back(c);
    highest = std::max(highest, 31 - std::countl_zero(states_in_cells(c) | 1U));
  }
  cost_table costs = read_state_tree(read_diagram(), highest);
  if (largest > 0) cut_costs(costs, largest);
  const auto shared = std::make_shared<const cost_table>(costs);
  for (const int c : characters) set_costs(c, shared);
  tell_state_trees(characters);
}

}  // namespace

void cstree_command() {
  no_timing();
  const int sign = skip_blanks_peek();
  if (sign == '+' || sign == '-') {
    next_nonblank();
    return set_decomposition(sign == '+');
  }
  require_data("defining character state trees");
  define_state_trees();
}

}  // namespace zeb
