// Steps of characters on a tree, for the groups that are selected by them.
// Polytomies are optimised as they stand, as in the reports of lengths.
#include "engine/plain/group_measures.h"

#include "engine/plain/plain_optimisation.h"
#include "matrix/character_steps.h"
#include "matrix/hooks.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

void measure_characters(tree_measure measure, int tree, std::span<double> values) {
  check_tree_number(tree);
  const std::vector<std::uint8_t> all(static_cast<std::size_t>(matrix.nchar), 1);
  plain_optimiser optimiser(all);
  optimiser.optimise(stored_tree(tree), polytomy_kind::hard, false);
  for (int c = 0; c < matrix.nchar; ++c) {
    const auto i = static_cast<std::size_t>(c);
    const character_record& record = matrix.characters[i];
    double steps = static_cast<double>(optimiser.steps(c));
    if (measure == tree_measure::homoplasy) steps -= minimum_steps(c);
    if (measure == tree_measure::score) steps *= record.weight;
    values[i] = record.is_continuous ? steps / 1000 : steps;
  }
}

}  // namespace

void register_group_measures() { hooks_of_matrix.measure_characters = measure_characters; }

}  // namespace zeb
