#include "compare/comparison.h"

#include <algorithm>

namespace zeb {

bool comparison_counts::any() const {
  const int all[] = {taxa_added,
                     taxa_deleted,
                     characters_added,
                     characters_deleted,
                     missing_resolved,
                     missing_added,
                     states,
                     weights,
                     additivity,
                     activity,
                     internal_steps,
                     costs,
                     ancestral_states,
                     cells,
                     sequences,
                     scales,
                     landmarks,
                     landmarks_missing_first,
                     landmarks_missing_second};
  return std::ranges::any_of(all, [](int count) { return count > 0; });
}

}  // namespace zeb
