// One clip after the other: what happens before and after its reconnections are tried.
#pragma once

#include "search/moves/swap_run.h"

namespace zeb {

/// Moves on to the next node to clip; false when the swap is over. Counts, reports and polls.
bool next_clip(swap_run& run);
/// Detaches the clip, repairs the sets and costs its home. False: nothing can be gained, and the
/// clip is back.
bool begin_clip(swap_run& run);
/// Takes the better position, if there is one, or puts the clip back.
void finish_clip(swap_run& run);

}  // namespace zeb
