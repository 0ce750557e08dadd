#include "engine/plain/tree_scores.h"

#include <vector>

#include "engine/fit/fits.h"
#include "engine/search_data.h"
#include "engine/settings.h"
#include "trees/tree_store.h"

namespace zeb {

double tree_score(const plain_optimiser& optimiser, std::span<const std::uint8_t> characters) {
  return engine.implied_on ? tree_fit(optimiser, characters, fit_form::cost) : optimiser.score();
}

int score_decimals(bool has_continuous) {
  if (engine.implied_on) return 5;
  return has_continuous ? 3 : 0;
}

void score_stored_trees(std::span<double> scores) {
  const std::vector<std::uint8_t> characters = scored_characters();
  plain_optimiser optimiser(characters);
  for (std::size_t t = 0; t < scores.size(); ++t) {
    optimiser.optimise(stored_tree(static_cast<int>(t)), polytomy_kind::hard, kept_sets::none);
    scores[t] = tree_score(optimiser, characters);
  }
}

}  // namespace zeb
