// Bremer supports by swapping.
//
// Every TBR rearrangement of a tree within the limit is met once, and none is made: its cost is
// known from the swapper, and the groups that it destroys lie on the path between the old and the
// new place of the clip. So one round over the neighbourhood gives a bound for all groups at once,
// at the price of collapsing by TBR.
#pragma once

#include "supports/bremer_requests.h"

namespace zeb {

/// The groups of the best of the trees asked for, by the neighbours of all of them. An interrupt
/// ends the swapping, and what was met until then counts. Errors: limits are missing that relative
/// supports need; the outgroup is to be cut off; what packing refuses.
bremer_result supports_by_swapping(const bremer_request& request);

}  // namespace zeb
