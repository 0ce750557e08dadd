#include "engine/fit/fits.h"

#include <algorithm>

#include "base/indices.h"
#include "engine/search_data.h"
#include "matrix/character_steps.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

double weighted_homoplasy(const plain_optimiser& optimiser, int character) {
  return matrix.characters[at(character)].weight * character_homoplasy(optimiser, character);
}

/// A weighting set with those of its characters that count.
struct set_sum {
  double homoplasy = 0;  // weighted
  bool counts = false;
};

std::vector<set_sum> sums_of_sets(const plain_optimiser& optimiser, const fit_rules& rules,
                                  std::span<const std::uint8_t> characters) {
  std::vector<set_sum> sums(rules.sets.size());
  for (int c = 0; c < matrix.nchar && !sums.empty(); ++c) {
    const int set = rules.set_of_character(c);
    if (set < 0 || !characters[at(c)]) continue;
    sums[at(set)].homoplasy += weighted_homoplasy(optimiser, c);
    sums[at(set)].counts = true;
  }
  return sums;
}

/// Of a landmark character: each of its points has a fit of its own.
double fit_of_points(const plain_optimiser& optimiser, const fit_rules& rules, int character,
                     fit_form form) {
  double sum = 0;
  for (const auto& p : optimiser.points(character)) {
    const double cost =
        rules.fit(function_of_point(rules, character, p.observed, p.all), p.homoplasy);
    sum += p.weight * (form == fit_form::cost ? cost : 1 - cost);
  }
  return sum;
}

}  // namespace

double character_homoplasy(const plain_optimiser& optimiser, int character) {
  const character_record& record = matrix.characters[at(character)];
  if (record.type == landmark_data) {
    double sum = 0;
    for (const auto& p : optimiser.points(character)) sum += p.weight * p.homoplasy;
    return sum;
  }
  const double unit = record.is_continuous ? 1000.0 : 1.0;
  const auto extra = static_cast<double>(optimiser.steps(character) -
                                         homoplasy_base(character, minimum_steps(character)));
  return std::max(0.0, extra / unit) + record.internal_steps;
}

double character_fit(const plain_optimiser& optimiser, const fit_rules& rules, int character,
                     fit_form form) {
  if (matrix.characters[at(character)].type == landmark_data)
    return fit_of_points(optimiser, rules, character, form);
  const double cost = rules.character_fit(character, character_homoplasy(optimiser, character));
  return form == fit_form::cost ? cost : 1 - cost;
}

double tree_fit(const plain_optimiser& optimiser, const fit_rules& rules,
                std::span<const std::uint8_t> characters, fit_form form) {
  double sum = 0;
  for (int c = 0; c < matrix.nchar; ++c)
    if (characters[at(c)] && rules.set_of_character(c) < 0)
      sum += matrix.characters[at(c)].weight * character_fit(optimiser, rules, c, form);
  const std::vector<set_sum> sets = sums_of_sets(optimiser, rules, characters);
  for (std::size_t s = 0; s < sets.size(); ++s) {
    if (!sets[s].counts) continue;
    const double cost = rules.set_fit(static_cast<int>(s), sets[s].homoplasy);
    sum += form == fit_form::cost ? cost : rules.sets[s].characters - cost;
  }
  return sum;
}

std::vector<double> fit_by_character(const plain_optimiser& optimiser, const fit_rules& rules,
                                     std::span<const std::uint8_t> characters) {
  std::vector<double> fits(at(matrix.nchar), 0);
  const std::vector<set_sum> sets = sums_of_sets(optimiser, rules, characters);
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!characters[at(c)]) continue;
    const int set = rules.set_of_character(c);
    if (set < 0) {
      fits[at(c)] =
          matrix.characters[at(c)].weight * character_fit(optimiser, rules, c, fit_form::cost);
    } else if (sets[at(set)].homoplasy > 0) {
      fits[at(c)] = rules.set_fit(set, sets[at(set)].homoplasy) * weighted_homoplasy(optimiser, c) /
                    sets[at(set)].homoplasy;
    }
  }
  return fits;
}

}  // namespace zeb
