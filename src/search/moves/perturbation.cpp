#include "search/moves/perturbation.h"

namespace zeb {

bool may_accept_worse(const perturbation& how, const search_data& data, const clip_place& home,
                      const clip_place& other) {
  return how.accept_worse &&
         relative_fit_difference(data, home, other, false) <= how.relative_fit_difference;
}

bool accepts_worse(const perturbation& how, random_generator& random, const search_data& data,
                   double worse, double score, const clip_place& home, const clip_place& other) {
  const double drawn = random.draw() % 100 / ((2 * how.drifted + worse) * 100.0);
  const double chance = drawn + how.factor * drawn;
  if (chance < worse / score) return false;
  const double difference = relative_fit_difference(data, home, other, false);
  return difference <= how.relative_fit_difference && chance >= difference;
}

}  // namespace zeb
