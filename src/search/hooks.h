// What higher rooms give the searches.
#pragma once

#include <vector>

#include "search/moves/move_slots.h"

namespace zeb {

/// Filled at start-up.
struct search_hooks {
  std::vector<slot_binder> slot_binders;  // called with the packed data of each context
};
extern search_hooks hooks_of_search;

}  // namespace zeb
