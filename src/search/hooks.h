// What higher rooms give the searches.
#pragma once

#include <memory>
#include <vector>

#include "search/moves/candidate_judge.h"
#include "search/moves/move_slots.h"

namespace zeb {

struct search_context;

/// Filled at start-up.
struct search_hooks {
  std::vector<slot_binder> slot_binders;  // called with the packed data of each context
  /// For swaps with characters that are scored by whole trees.
  std::unique_ptr<candidate_judge> (*judge_of_swap)(swap_run& run) = nullptr;
  /// A search over the trees in memory is over, or broken off.
  void (*search_ended)(const search_context& context) = nullptr;
};
extern search_hooks hooks_of_search;

}  // namespace zeb
