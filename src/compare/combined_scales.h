// Continuous characters of a combination, each on one scale.
#pragma once

#include <cstdint>
#include <vector>

#include "compare/combined_data.h"
#include "compare/comparison.h"

namespace zeb {

/// The values of one character by taxon.
struct continuous_column {
  std::vector<entry_range> values;
  std::vector<std::uint8_t> is_missing;
};
/// Stores the values on the scale that the character has; on another one where they don't fit.
void store_column(data_set& data, int character, const continuous_column& column);
/// A range as a cell of a character on this scale; values that don't fit become the nearest ones.
std::uint32_t stored_range(const entry_range& range, const continuous_scale& scale);
/// All continuous characters of the combination: of the first set as they are, of the second set on
/// the scale of the first, and as was decided where both have a value.
void store_continuous(const comparison_task& task, const comparison& found, combination& result);

}  // namespace zeb
