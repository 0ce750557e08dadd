// How far a rearranged tree is worse in relation to the evidence for and against it.
#pragma once

#include "engine/search_data.h"
#include "search/moves/swap_task.h"

namespace zeb {

/// Relative fit difference of two places of one clip. Some characters fit `home` better, and lose F
/// together when the clip goes to `other`; the rest lose nothing or gain, C together. The
/// difference is (F - C) / F, and 0 where no character fits `home` better. The sets are those of
/// the two halves. A configuration of landmarks is one character: it costs what is estimated of
/// joining the halves, or, `in_full`, what the joined trees do.
double relative_fit_difference(const search_data& data, const clip_place& home,
                               const clip_place& other, bool in_full);

}  // namespace zeb
