// What higher rooms give the searches.
#pragma once

#include <vector>

#include "search/moves/move_slots.h"

namespace zeb {

struct search_context;

/// Filled at start-up.
struct search_hooks {
  std::vector<slot_binder> slot_binders;  // called with the packed data of each context
  /// A search over the trees in memory is over, or broken off.
  void (*search_ended)(const search_context& context) = nullptr;
};
extern search_hooks hooks_of_search;

}  // namespace zeb
