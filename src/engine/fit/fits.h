// Fit of stored trees under implied weights: a character costs less the more
// homoplasy it has.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/fit/fit_rules.h"
#include "engine/plain/plain_optimisation.h"

namespace zeb {

/// Which sum over the characters is the fit.
enum class fit_form {
  cost,  // weight * h / (k + h): 0 without homoplasy, to be minimised
  gain,  // weight * k / (k + h): the weights' sum without homoplasy, to be maximised
};

/// Homoplasy of a character on the last tree of the optimiser: steps beyond the minimum, plus the
/// internal steps. In steps, or in whole units of a continuous character; never negative.
double character_homoplasy(const plain_optimiser& optimiser, int character);
/// Fit of one character by itself, unweighted.
double character_fit(const plain_optimiser& optimiser, const fit_rules& rules, int character,
                     fit_form form);
/// Sum over the characters marked (one byte each), which the optimiser must have taken: weighted
/// fits of characters, and those of weighting sets.
double tree_fit(const plain_optimiser& optimiser, const fit_rules& rules,
                std::span<const std::uint8_t> characters, fit_form form);
/// By character what it adds to the fit as a cost: its own, or its share of that of its set, by
/// homoplasy. 0 for characters that aren't marked.
std::vector<double> fit_by_character(const plain_optimiser& optimiser, const fit_rules& rules,
                                     std::span<const std::uint8_t> characters);

}  // namespace zeb
