// Lengths and homoplasy of trees, and the states of their nodes.
#include <algorithm>
#include <optional>
#include <vector>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "engine/fit/fits.h"
#include "engine/fit/weighting_settings.h"
#include "engine/plain/plain_optimisation.h"
#include "engine/search_data.h"
#include "functions/arguments.h"
#include "functions/kept_scores.h"
#include "functions/subjects.h"
#include "language/lexer.h"
#include "macro/assignment.h"
#include "matrix/character_steps.h"
#include "matrix/matrix.h"
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

// Steps of one character count once; the length of a tree is weighted.
double length(polytomy_kind polytomies) {
  const score_argument argument = read_argument();
  if (argument.character < 0) {
    // Trees without polytomies have the same length either way.
    const std::optional<double> length = quick_length(stored_tree(argument.tree));
    if (length) return *length;
  }
  plain_optimiser& optimiser = kept_optimiser(marks_of(argument));
  optimiser.optimise(stored_tree(argument.tree), polytomies);
  if (argument.character < 0) return optimiser.score();
  return optimiser.length(argument.character);
}

// Steps beyond the minimum, and the internal steps.
double homoplasy(polytomy_kind polytomies, bool weighted) {
  const score_argument argument = read_argument();
  const std::vector<std::uint8_t> marks = marks_of(argument);
  plain_optimiser& optimiser = kept_optimiser(marks);
  optimiser.optimise(stored_tree(argument.tree), polytomies);
  double sum = 0;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!marks[static_cast<std::size_t>(c)]) continue;
    const int weight = matrix.characters[static_cast<std::size_t>(c)].weight;
    sum += character_homoplasy(optimiser, c) * (argument.character < 0 || weighted ? weight : 1);
  }
  return sum;
}

// As with steps, the weight counts in the fit of a tree only.
double fit(polytomy_kind polytomies) {
  const score_argument argument = read_argument();
  const std::vector<std::uint8_t> marks = marks_of(argument);
  plain_optimiser& optimiser = kept_optimiser(marks);
  optimiser.optimise(stored_tree(argument.tree), polytomies);
  if (argument.character < 0)
    return tree_fit(optimiser, current_fit_rules(), marks, fit_form::cost);
  return character_fit(optimiser, current_fit_rules(), argument.character, fit_form::cost);
}

// "[T]": by character the weight k/(k+h) that its homoplasy on the tree implies; 0 for characters
// that don't count.
double implied_weights() {
  open_brackets();
  const int tree = tree_argument();
  close_brackets();
  const std::vector<std::uint8_t> marks = scored_characters();
  plain_optimiser& optimiser = kept_optimiser(marks);
  optimiser.optimise(stored_tree(tree), polytomy_kind::hard);
  const fit_rules rules = current_fit_rules();
  if (!rules.user.empty()) error_end("With user weighting functions, cannot do fits");
  std::vector<double> weights;
  for (int c = 0; c < matrix.nchar; ++c) {
    const bool counts = marks[static_cast<std::size_t>(c)];
    weights.push_back(counts ? character_fit(optimiser, rules, c, fit_form::gain) : 0);
  }
  return write_list("Impwtlist", weights);
}

// What searches minimise: the fit under implied weights, else the length.
double score(polytomy_kind polytomies) {
  return weighting.on ? fit(polytomies) : length(polytomies);
}

template <double (*measure)(polytomy_kind)>
double hard() {
  return measure(polytomy_kind::hard);
}
template <double (*measure)(polytomy_kind)>
double soft() {
  return measure(polytomy_kind::soft);
}
double plain_homoplasy(polytomy_kind polytomies) { return homoplasy(polytomies, false); }
double weighted_homoplasy(polytomy_kind polytomies) { return homoplasy(polytomies, true); }

// ---- states of nodes ----

constexpr int every = -1;  // "." in place of a character or node

// "[C N T]", ":" before N for the down-pass states.
struct states_argument {
  int character = every;
  int node = every;
  int tree = 0;
  bool down = false;
};

states_argument read_states_argument() {
  states_argument result;
  open_brackets();
  if (!accept_char('.')) result.character = character_argument();
  result.down = accept_char(':');
  if (!accept_char('.')) result.node = whole_argument();
  result.tree = tree_argument();
  close_brackets();
  const const_tree_span tree = stored_tree(result.tree);
  const bool in_tree = result.node >= 0 && result.node < node_limit(tree, matrix.ntax);
  if (result.node != every &&
      (!in_tree || (result.node < matrix.ntax && is_absent(tree, result.node))))
    error_end("Tree doesn't have such node");
  return result;
}

// What every node of the tree has of a character that no tree has steps in: the one state that
// occurs, or all where none does.
std::uint32_t constant_states(int character) {
  const std::uint32_t observed = matrix.characters[static_cast<std::size_t>(character)].observed;
  return observed ? observed : matrix.state_mask;
}

// An ordered character stands in one column for each threshold: a state is possible where no
// threshold below it says "not above" only, and none above it says "above" only.
std::uint32_t ordered_states(std::span<const plain_column> columns,
                             std::span<const std::uint32_t> sets) {
  std::uint32_t states = 0;
  for (int s = columns.front().threshold; s <= columns.back().threshold + 1; ++s) {
    bool possible = true;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const bool above = s > columns[i].threshold;
      possible = possible && (sets[i] & (above ? 2U : 1U));
    }
    if (possible) states |= 1U << s;
  }
  return states;
}

// Calls `visit(character, states)` for the characters of the slice that a tree has steps in.
template <class function>
void for_each_character(const plain_slice& slice, int node, bool down, function visit) {
  const std::span<const plain_column> columns = slice.columns();
  const std::span<const std::uint32_t> sets = down ? slice.down(node) : slice.final(node);
  for (std::size_t i = 0, end = 0; i < columns.size(); i = end) {
    while (end < columns.size() && columns[end].character == columns[i].character) ++end;
    const bool ordered = columns[i].threshold >= 0;
    visit(
        columns[i].character,
        ordered ? ordered_states(columns.subspan(i, end - i), sets.subspan(i, end - i)) : sets[i]);
  }
  const cost_optimiser& with_costs = slice.with_costs();
  for (std::size_t i = 0; i < with_costs.size(); ++i)
    visit(with_costs.character(i), (down ? with_costs.down(node) : with_costs.final(node))[i]);
}

bool has_states(int character) {
  const character_record& record = matrix.characters[static_cast<std::size_t>(character)];
  return !record.is_continuous && record.type != landmark_data;
}

// With ".", characters without states and nodes that aren't in the tree have none: 0. Rows are
// characters, columns nodes.
double node_states() {
  const states_argument argument = read_states_argument();
  const bool all_characters = argument.character == every;
  const bool all_nodes = argument.node == every;
  if (!all_characters && !has_states(argument.character))
    error_end("Expression \"states\" is for discrete characters");
  const const_tree_span tree = stored_tree(argument.tree);
  std::vector<std::uint8_t> marks(static_cast<std::size_t>(matrix.nchar), 0);
  for (int c = 0; c < matrix.nchar; ++c)
    marks[static_cast<std::size_t>(c)] =
        (all_characters || c == argument.character) && has_states(c);
  const int first_node = all_nodes ? 0 : argument.node;
  const int nodes = all_nodes ? node_limit(tree, matrix.ntax) : 1;
  const int first_character = all_characters ? 0 : argument.character;
  const int characters = all_characters ? matrix.nchar : 1;
  const arena_scope scratch;
  const auto values = calloc_high<double>(checked_product(at(characters), at(nodes)));
  const auto value_of = [&](int character, int node) -> double& {
    return values[at(character - first_character) * at(nodes) + at(node - first_node)];
  };
  const auto is_there = [&](int node) { return node >= matrix.ntax || !is_absent(tree, node); };
  recheck_steps();
  for (int c = first_character; c < first_character + characters; ++c)
    for (int node = first_node; node < first_node + nodes; ++node)
      if (marks[at(c)] && is_there(node)) value_of(c, node) = constant_states(c);
  plain_optimiser(marks).optimise(tree, [&](const plain_slice& slice) {
    for (int node = first_node; node < first_node + nodes; ++node)
      if (is_there(node))
        for_each_character(slice, node, argument.down,
                           [&](int c, std::uint32_t states) { value_of(c, node) = states; });
  });
  if (all_characters && all_nodes) return write_rows("States", values, nodes);
  return all_characters || all_nodes ? write_list("States", values) : values[0];
}

// clang-format off
constexpr expression_function rows[] = {
    {"length", "[T C]", "length of tree T, or steps of character C on it (C optional)", hard<length>},
    {"softlength", "[T C]", "as length, with soft polytomies (C optional)", soft<length>},
    {"score", "[T C]", "score of tree T, or of character C on it (C optional)", hard<score>},
    {"softscore", "[T C]", "as score, with soft polytomies (C optional)", soft<score>},
    {"homo", "[T C]", "homoplasy of tree T (weighted), or of character C on it (C optional)", hard<plain_homoplasy>, function_list::general, "havetgp"},
    {"softhomo", "[T C]", "as homo, with soft polytomies (C optional)", soft<plain_homoplasy>},
    {"whomo", "[T C]", "homoplasy times weight (C optional)", hard<weighted_homoplasy>},
    {"states", "[C N T]", "states of character C at node N of tree T, as bits; : before N takes the down-pass states; . for C or N lists all of them, in an array, . for both in an array [characters nodes]", node_states},
    {"impwtlist", "[T]", "list by character of the weights k/(k+h) that tree T implies; 0 for characters that don't count", implied_weights},
    {"fit", "[T C]", "fit of tree T, or of character C on it (C optional)", hard<fit>},
    {"softfit", "[T C]", "as fit, with soft polytomies (C optional)", soft<fit>, function_list::general, "softscore"},
};
// clang-format on

}  // namespace

const std::span<const expression_function> score_functions = rows;

}  // namespace zeb
