#include "support/weighting_oracle.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace naive {
namespace {

using character = implied_weights::character;

/// Costs of extra steps one after the other; of a last, partial one its part.
double sum_of_user_costs(const std::vector<double>& costs, double h) {
  double sum = 0;
  for (std::size_t i = 0; h > 0; ++i, h -= 1)
    sum += std::min(h, 1.0) * (i < costs.size() ? costs[i] : costs.back());
  return sum;
}

double cost(const implied_weights& how, double k, double h) {
  if (how.user_costs.empty()) return h / (k + h);
  return sum_of_user_costs(how.user_costs, h * how.k / k);
}

double concavity(const implied_weights& how, double own, double observed, double entries) {
  if (own > 0) return own;
  if (!how.extrapolates) return how.k;
  const double hidden = (entries - observed) * how.share;
  if (observed + hidden == 0) return how.k;
  return how.k * std::max(1 / how.most_ratio, observed / (observed + hidden));
}

double score_of_set(const implied_weights& how, const std::vector<double>& homoplasy, int set) {
  double count = 0;
  double sum = 0;
  double observed = 0;
  double entries = 0;
  double own = 0;
  for (std::size_t i = 0; i < homoplasy.size(); ++i) {
    const character& c = how.characters[i];
    if (!c.active || c.set != set) continue;
    ++count;
    sum += c.weight * homoplasy[i];
    observed += c.observed;
    entries += c.entries;
    if (own <= 0) own = c.own_k;
  }
  if (count == 0) return 0;
  return count * cost(how, concavity(how, own, observed, entries), sum / count);
}

double score_of_character(const implied_weights& how, const character& c, double h) {
  if (!how.extended) return c.weight * cost(how, how.k, h);
  if (c.constant) {
    const double n = how.constant_steps;
    return c.weight * h * how.constant_factor * (cost(how, how.k, n + 1) - cost(how, how.k, n));
  }
  return c.weight * cost(how, concavity(how, c.own_k, c.observed, c.entries), h);
}

}  // namespace

double score(const implied_weights& how, const std::vector<double>& homoplasy) {
  double sum = 0;
  int sets = 0;
  for (std::size_t i = 0; i < homoplasy.size(); ++i) {
    const character& c = how.characters[i];
    sets = std::max(sets, c.set + 1);
    if (c.active && (c.set < 0 || !how.extended)) sum += score_of_character(how, c, homoplasy[i]);
  }
  for (int s = 0; s < sets && how.extended; ++s) sum += score_of_set(how, homoplasy, s);
  return sum;
}

}  // namespace naive
