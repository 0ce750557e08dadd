// Drifting: swapping that takes equally good trees, and by chance worse ones, then the way down
// again.
#pragma once

#include "search/drivers/cycles.h"

namespace zeb {

/// The settings of `drift`.
struct drift_settings {
  cycle_settings cycles{.iterations = 30, .numsubs = 60};
  double fitdiff = 1.0;   // moves that are worse by more aren't accepted; score units
  double rfitdiff = 0.2;  // likewise, by relative fit difference
  double xfactor = 3.0;   // the larger, the more worse moves are accepted
  int flat = 0;           // the first so many cycles have these two instead:
  double rflat = -1;      // of `rfitdiff`; negative: the same
  int flatnumsubs = 60;   // of `numsubs`
  bool pert = true;       // accept worse moves at all
};
extern drift_settings drift;  // written by the command

/// As `ratchet_search`.
cycle_result drift_search(search_context& context, std::span<std::int32_t> tree,
                          const drift_settings& options, const cycle_task& task);

}  // namespace zeb
