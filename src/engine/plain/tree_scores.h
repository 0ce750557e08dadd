// Scores of stored trees under the criterion in force: lengths, or fits under implied weights.
#pragma once

#include <cstdint>
#include <span>

#include "engine/fit/fit_rules.h"
#include "engine/plain/plain_optimisation.h"

namespace zeb {

/// Score of the last tree of the optimiser, which took the characters marked (one byte each).
/// By `rules` it is a fit, or, where they are off, the length.
double tree_score(const plain_optimiser& optimiser, const fit_rules& rules,
                  std::span<const std::uint8_t> characters);
/// Do some of the characters marked cost fractions of steps: continuous ones, landmarks?
bool have_fractions(std::span<const std::uint8_t> characters);
/// Decimals that scores are shown with: none for steps, 3 with continuous characters among those
/// scored, 5 for fits.
int score_decimals(bool has_continuous);

/// Fills the scores of all trees of the buffer, polytomies taken as hard.
void score_stored_trees(std::span<double> scores);

}  // namespace zeb
