#include "mapping/registration.h"

#include <algorithm>
#include <vector>

#include "base/indices.h"
#include "engine/fit/fit_rules.h"
#include "engine/fit/fits.h"
#include "engine/fit/weighting_settings.h"
#include "engine/hooks.h"
#include "engine/plain/plain_optimisation.h"
#include "landmarks/hooks.h"
#include "mapping/configurations/shape_figures.h"
#include "mapping/down_pass_rows.h"
#include "mapping/landmark_measures.h"
#include "matrix/character_steps.h"
#include "matrix/hooks.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// For the groups that are selected by what their characters do on a tree. Polytomies are optimised
/// as they stand, as in the reports of lengths.
void measure_characters(tree_measure measure, int tree, std::span<double> values) {
  check_tree_number(tree);
  const std::vector<std::uint8_t> all(at(matrix.nchar), 1);
  plain_optimiser optimiser(all);
  optimiser.optimise(stored_tree(tree), polytomy_kind::hard);
  const fit_rules rules = current_fit_rules();
  if (measure == tree_measure::score && rules.on) {
    const std::vector<double> fits = fit_by_character(optimiser, rules, all);
    std::copy(fits.begin(), fits.end(), values.begin());
    return;
  }
  for (int c = 0; c < matrix.nchar; ++c) {
    double length = optimiser.length(c);
    if (measure == tree_measure::homoplasy) length -= lengths_over_active_taxa(c).least;
    if (measure == tree_measure::score) length *= matrix.characters[at(c)].weight;
    values[at(c)] = length;
  }
}

}  // namespace

void register_mapping() {
  hooks_of_engine.measure_landmarks = measure_landmarks;
  hooks_of_engine.mark_moved_landmarks = mark_moved_landmarks;
  hooks_of_landmarks.implied_weights = [] { return weighting.on; };
  hooks_of_landmarks.draw_map = draw_landmark_map;
  hooks_of_matrix.node_rows = rows_of_tree;
  hooks_of_matrix.measure_characters = measure_characters;
}

}  // namespace zeb
