#include "engine/fit/fits.h"

#include <algorithm>

#include "engine/search_data.h"
#include "engine/settings.h"
#include "matrix/character_steps.h"
#include "matrix/matrix.h"

namespace zeb {

double character_homoplasy(const plain_optimiser& optimiser, int character) {
  const character_record& record = matrix.characters[static_cast<std::size_t>(character)];
  const double unit = record.is_continuous ? 1000.0 : 1.0;
  const auto extra = static_cast<double>(optimiser.steps(character) -
                                         homoplasy_base(character, minimum_steps(character)));
  return std::max(0.0, extra / unit) + record.internal_steps;
}

double character_fit(const plain_optimiser& optimiser, int character, fit_form form) {
  const double k = engine.concavity;
  const double h = character_homoplasy(optimiser, character);
  return (form == fit_form::cost ? h : k) / (k + h);
}

double tree_fit(const plain_optimiser& optimiser, std::span<const std::uint8_t> characters,
                fit_form form) {
  double sum = 0;
  for (int c = 0; c < matrix.nchar; ++c) {
    const auto i = static_cast<std::size_t>(c);
    if (characters[i]) sum += matrix.characters[i].weight * character_fit(optimiser, c, form);
  }
  return sum;
}

}  // namespace zeb
