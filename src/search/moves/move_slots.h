// What a move costs and meets beyond the packed sets. The slots of a context are bound when it is
// made, by what its data have; unbound, they cost one test for each candidate that passes the
// kernels.
#pragma once

#include "engine/search_data.h"

namespace zeb {

struct move_slots {
  /// Would the clip, joined by its branch `root` to the branch `target`, break a constraint?
  bool (*forbids)(const search_data& data, int clip, int root, int target) = nullptr;
};

/// Called with the packed data of each context that is made.
using slot_binder = void (*)(const search_data& data, move_slots& slots);

}  // namespace zeb
