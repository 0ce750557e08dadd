// Lengths and homoplasy of trees, and the states of their nodes.
#include <vector>

#include "engine/fits.h"
#include "engine/plain_optimisation.h"
#include "functions/arguments.h"
#include "functions/function_table.h"
#include "matrix/matrix.h"
#include "shell/errors.h"
#include "shell/lexer.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

// "[T]" or "[T C]".
struct score_argument {
  int tree = 0;
  int character = -1;  // -1: all
};

score_argument read_argument() {
  score_argument result;
  open_brackets();
  result.tree = tree_argument();
  if (skip_blanks_peek() != ']') result.character = character_argument();
  close_brackets();
  return result;
}

// One character is scored whether it is active or not, as weighted as it is.
std::vector<std::uint8_t> marks_of(const score_argument& argument) {
  if (argument.character < 0) return scored_characters();
  std::vector<std::uint8_t> marks(static_cast<std::size_t>(matrix.nchar), 0);
  marks[static_cast<std::size_t>(argument.character)] = 1;
  return marks;
}

double in_units(int character, std::int64_t steps) {
  const bool continuous = matrix.characters[static_cast<std::size_t>(character)].is_continuous;
  return continuous ? static_cast<double>(steps) / 1000 : static_cast<double>(steps);
}

// Steps of one character count once; the length of a tree is weighted.
double length(polytomy_kind polytomies) {
  const score_argument argument = read_argument();
  plain_optimiser optimiser(marks_of(argument));
  optimiser.optimise(stored_tree(argument.tree), polytomies, false);
  if (argument.character < 0) return optimiser.score();
  return in_units(argument.character, optimiser.steps(argument.character));
}

double homoplasy(polytomy_kind polytomies) {
  const score_argument argument = read_argument();
  const std::vector<std::uint8_t> marks = marks_of(argument);
  plain_optimiser optimiser(marks);
  optimiser.optimise(stored_tree(argument.tree), polytomies, false);
  double sum = 0;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!marks[static_cast<std::size_t>(c)]) continue;
    const double extra = in_units(c, optimiser.steps(c) - minimum_steps(c));
    sum += argument.character < 0 ? extra * matrix.characters[static_cast<std::size_t>(c)].weight
                                  : extra;
  }
  return sum;
}

// As with steps, the weight counts in the fit of a tree only.
double fit(polytomy_kind polytomies) {
  const score_argument argument = read_argument();
  const std::vector<std::uint8_t> marks = marks_of(argument);
  plain_optimiser optimiser(marks);
  optimiser.optimise(stored_tree(argument.tree), polytomies, false);
  if (argument.character < 0) return tree_fit(optimiser, marks, fit_form::cost);
  return character_fit(optimiser, argument.character, fit_form::cost);
}

double hard_length() { return length(polytomy_kind::hard); }
double soft_length() { return length(polytomy_kind::soft); }
double hard_homoplasy() { return homoplasy(polytomy_kind::hard); }
double soft_homoplasy() { return homoplasy(polytomy_kind::soft); }
double hard_fit() { return fit(polytomy_kind::hard); }
double soft_fit() { return fit(polytomy_kind::soft); }

// "[C N T]", ":" before N for the down-pass states. "." needs arrays and stays to be built.
double node_states() {
  open_brackets();
  if (accept_char('.')) error_end("Expression \"states\" with \".\" is not available yet");
  const int character = character_argument();
  const bool down = accept_char(':');
  if (accept_char('.')) error_end("Expression \"states\" with \".\" is not available yet");
  const int node = whole_argument();
  const int tree = tree_argument();
  close_brackets();
  const character_record& record = matrix.characters[static_cast<std::size_t>(character)];
  if (record.is_continuous) error_end("Expression \"states\" is for discrete characters");
  const const_tree_span nodes = stored_tree(tree);
  if (node < 0 || node >= node_limit(nodes, matrix.ntax)) error_end("Tree doesn't have such node");
  plain_optimiser optimiser(marks_of({tree, character}));
  optimiser.optimise(nodes, polytomy_kind::hard, true);
  const std::span<const std::uint32_t> sets = down ? optimiser.down(node) : optimiser.final(node);
  // An ordered character stands in one column for each threshold: a state is possible where no
  // threshold below it says "not above" only, and none above it says "above" only.
  if (optimiser.columns().empty()) return 0;
  if (optimiser.columns()[0].threshold < 0) return sets[0];
  std::uint32_t states = 0;
  const int lowest = optimiser.columns().front().threshold;
  const int highest = optimiser.columns().back().threshold + 1;
  for (int s = lowest; s <= highest; ++s) {
    bool possible = true;
    for (std::size_t i = 0; i < optimiser.columns().size(); ++i) {
      const bool above = s > optimiser.columns()[i].threshold;
      possible = possible && (sets[i] & (above ? 2U : 1U));
    }
    if (possible) states |= 1U << s;
  }
  return states;
}

constexpr function_row rows[] = {
    {"length", hard_length},    {"softlength", soft_length}, {"score", hard_length},
    {"softscore", soft_length}, {"homo", hard_homoplasy},    {"softhomo", soft_homoplasy},
    {"whomo", hard_homoplasy},  {"states", node_states},     {"fit", hard_fit},
    {"softfit", soft_fit},
};

}  // namespace

std::span<const function_row> score_functions() { return rows; }

}  // namespace zeb
