#include "mapping/value_ranges.h"

#include <algorithm>
#include <vector>

#include "matrix/matrix.h"

namespace zeb {

value_ranges::value_ranges(int character, const tree_shape& shape) : shape_(shape) {
  const silent_pattern silent = silent_pattern_of(character);
  std::vector<value_range> cells;
  for (int t = 0; t < matrix.ntax; ++t) {
    const bool says_nothing = silent.matches(cell(t, character));
    const continuous_cell range = read_continuous_cell(t, character);
    cells.push_back(says_nothing ? value_range{} : value_range{range.low, range.high});
    any_ = any_ || (!says_nothing && shape.has(t));
  }
  optimiser_.add_character(character, cells);
  optimiser_.optimise(shape.inner, shape.lists, polytomy_kind::hard, true);
}

// Toward the node's best values each unit of change saves the subtree one, as far as its reach
// goes: then the change may lie on this branch or above it, with all values between being as good.
value_range value_ranges::following(int node, int above) const {
  const value_range best = down(node);
  const value_range reach = optimiser_.reach(node)[0];
  if (above < best.low) return {std::max(above, reach.low), best.low};
  if (above > best.high) return {best.high, std::min(above, reach.high)};
  return {above, above};
}

size_change value_ranges::largest_change(int node) const {
  const value_range above = final(shape_.ancestor(node));
  const value_range best = down(node);
  return {std::max(0, best.low - above.low), std::max(0, above.high - best.high)};
}

branch_range value_ranges::branch(int node) const {
  const value_range above = final(shape_.ancestor(node));
  const value_range reach = optimiser_.reach(node)[0];
  const size_change largest = largest_change(node);
  return {std::max({0, reach.low - above.high, above.low - reach.high}),
          std::max(largest.rise, largest.fall)};
}

}  // namespace zeb
