// Changes of characters along a tree, and how far the matrix is from one.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

#include "base/errors.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "functions/tree_arguments.h"
#include "language/lexer.h"
#include "mapping/state_changes.h"
#include "matrix/character_steps.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

int state_argument() {
  const int state = whole_argument();
  if (state < 0 || state > 31) error_end("No state", state);
  return state;
}

// "[T C S1 S2]".
change_range changes() {
  open_brackets();
  const int tree = tree_argument();
  const int character = character_argument();
  const int from = state_argument();
  const int to = state_argument();
  close_brackets();
  const character_record& record = matrix.characters[static_cast<std::size_t>(character)];
  if (record.is_continuous || record.type == landmark_data)
    error_end("Changes between states can be counted only for discrete characters");
  return count_changes(tree_shape(stored_tree(tree)), character, 1U << from, 1U << to);
}

double least_changes() { return changes().least; }
double most_changes() { return changes().most; }

// ---- flips ----

struct flip_costs {
  double gain = 1;  // of making a 0 a 1
  double loss = 1;  // of making a 1 a 0
};

flip_costs read_flip_costs() {
  flip_costs costs;
  if (skip_blanks_peek() == ']') return costs;
  std::vector<double> given;
  while (skip_blanks_peek() != ']' && given.size() < 3) given.push_back(whole_argument());
  if (given.size() != 2 || given[0] < 0 || given[1] < 0)
    error_end("Expected two numbers for flipd (0->1 and 1->0)");
  costs.gain = given[0];
  costs.loss = given[1];
  return costs;
}

// Flips that make a character's taxa with state 1 a group of the tree, or none or all of them
// (Chen and others 2003). Cells that are neither 0 nor 1 fit whatever is wanted.
double flips(int character, const std::vector<std::vector<int>>& groups, const flip_costs& costs) {
  int ones = 0;
  for (const int t : groups.front()) ones += cell(t, character) == 2;
  double least = costs.loss * ones;
  for (const std::vector<int>& group : groups) {
    int zeros_inside = 0;
    int ones_inside = 0;
    for (const int t : group) {
      zeros_inside += cell(t, character) == 1;
      ones_inside += cell(t, character) == 2;
    }
    least = std::min(least, costs.gain * zeros_inside + costs.loss * (ones - ones_inside));
  }
  return least;
}

double flip_distance() {
  open_brackets();
  const const_tree_span tree = stored_tree(tree_argument());
  const flip_costs costs = read_flip_costs();
  close_brackets();
  std::vector<std::vector<int>> groups = {terminals_of(tree, matrix.ntax)};
  for (const int t : groups.front()) groups.push_back({t});
  for (int node = matrix.ntax + 1; node < node_limit(tree, matrix.ntax); ++node)
    groups.push_back(terminals_of(tree, node));
  recheck_steps();
  double sum = 0;
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& record = matrix.characters[static_cast<std::size_t>(c)];
    if (!record.active) continue;
    if (record.is_continuous || record.type == landmark_data || (record.observed & ~3U))
      error_end_f("Expression \"flipd\" is for characters with states 0 and 1 (not %i)", c);
    sum += record.weight * flips(c, groups, costs);
  }
  return sum;
}

// clang-format off
constexpr expression_function rows[] = {
    {"mintrans", "[T C S1 S2]", "fewest changes from state S1 to S2 of character C on tree T, in any most parsimonious reconstruction", least_changes},
    {"maxtrans", "[T C S1 S2]", "most changes from state S1 to S2 of character C on tree T, in any most parsimonious reconstruction", most_changes},
    {"flipd", "[T j k]", "flip distance from tree T to the matrix, of characters 0/1: the least cost of flips that make every character a group of the tree; j and k (optional) are the costs of flipping 0 to 1 and 1 to 0", flip_distance},
};
// clang-format on

}  // namespace

const std::span<const expression_function> change_functions = rows;

}  // namespace zeb
