// From noted candidates to stored trees: each is made in the tree in work, compared with the trees
// of the store and taken apart again.
#pragma once

#include "search/moves/swap_run.h"

namespace zeb {

/// After the branches for one rooting `u`: stores or enumerates what was noted. True when the clip
/// is to end here.
bool store_noted(swap_run& run, int u);

}  // namespace zeb
