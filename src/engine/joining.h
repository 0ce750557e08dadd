// What it costs to join a clip, or a terminal that is added, to the main tree.
#pragma once

#include "engine/search_data.h"

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
/// below `bound` (below it under implied weights).
double join_cost(const search_data& data, join_side clip, join_side main, double bound);

}  // namespace zeb
