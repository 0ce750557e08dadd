#include "engine/plain/tree_scores.h"

#include <vector>

#include "engine/fit/fits.h"
#include "engine/fit/weighting_settings.h"
#include "engine/search_data.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {

double tree_score(const plain_optimiser& optimiser, const fit_rules& rules,
                  std::span<const std::uint8_t> characters) {
  return rules.on ? tree_fit(optimiser, rules, characters, fit_form::cost) : optimiser.score();
}

bool have_fractions(std::span<const std::uint8_t> characters) {
  for (std::size_t c = 0; c < characters.size(); ++c) {
    const character_record& record = matrix.characters[c];
    if (characters[c] && (record.is_continuous || record.type == landmark_data)) return true;
  }
  return false;
}

int score_decimals(bool has_continuous) {
  if (weighting.on) return 5;
  return has_continuous ? 3 : 0;
}

void score_stored_trees(std::span<double> scores) {
  const std::vector<std::uint8_t> characters = scored_characters();
  const fit_rules rules = current_fit_rules();
  plain_optimiser optimiser(characters);
  for (std::size_t t = 0; t < scores.size(); ++t) {
    optimiser.optimise(stored_tree(static_cast<int>(t)), polytomy_kind::hard);
    scores[t] = tree_score(optimiser, rules, characters);
  }
}

}  // namespace zeb
