// What it costs to join a clip, or a terminal that is added, to the main tree.
#pragma once

#include <algorithm>

#include "engine/search_data.h"
#include "engine/wide/wide_costs.h"

namespace zeb {

/// The packed words of a side.
inline const word* packed_words(const search_data& data, join_side side) {
  const std::size_t offset = static_cast<std::size_t>(side.number) * data.set_stride;
  switch (side.end) {
    case join_end::root:
      return data.sets[static_cast<std::size_t>(side.number)].down;
    case join_end::branch:
      return data.branch_base + offset;
    case join_end::final:
      return data.final_base + offset;
    case join_end::cluster:
      break;
  }
  return data.union_base + offset;
}

/// Cost over all characters, in units of the score. Exact as far as the kernels are: a result at or
/// below `bound` (below it under implied weights). Inline: builders that look ahead call it for
/// each branch, with kinds of sides that are known there.
inline double join_cost(const search_data& data, join_side clip, join_side main, double bound) {
  constexpr double most_steps = 1e9;  // above all sums of weights
  const word* const a = packed_words(data, clip);
  const word* const b = packed_words(data, main);
  const double cost = data.implied_on ? data.kernels.fit.cost_pair(a, b, data.layout, bound)
                                      : data.kernels.cost_pair(
                                            a, b, data.layout,
                                            static_cast<std::int32_t>(std::min(bound, most_steps)));
  if (!data.has_wide || cost > bound) return cost;
  return cost + wide_join_cost(data, clip, main, bound - cost);
}

}  // namespace zeb
