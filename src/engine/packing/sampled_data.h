// A sample of the characters of a data set, as a data set of its own.
#pragma once

#include <cstdint>
#include <span>

#include "engine/search_data.h"

namespace zeb {

/// May the fields of `whole` weigh that much?
bool sample_fits(const search_data& whole, std::span<const std::uint8_t> factors);
/// Prepares `sample`: the taxa of `whole`, each character with `factors[character]` times the
/// weight that it has there, those of factor 0 left out. Words are copied, not packed; steps that
/// all trees share are those of `whole`, so scores are right up to a constant. The sample uses
/// tables of `whole`. The sample must fit. Memory: the arena's low stack.
void prepare_sampled_data(search_data& sample, const search_data& whole,
                          std::span<const std::uint8_t> factors);

}  // namespace zeb
