// Branch swapping on all stored trees.
#pragma once

#include <string>

#include "search/search_context.h"

namespace zeb {

/// What a run did, for its summary.
struct bbreak_result {
  double best = 0;
  bool interrupted = false;
  std::string not_swapped;     // trees left unswapped, "4", "4-9"; empty: none
  int equal_by_full_rule = 0;  // trees dropped by drop_equal_by_full_rule
  int full_at = -1;            // the tree that was swapped when the buffer became full
};

/// Swaps each tree in the context's slots, those that are found as well; the slots keep the best
/// (and what the rules allow above). There must be trees. `full_rule`: the trees are those of the
/// user's buffer, and the full collapsing rule is applied at the end.
bbreak_result swap_stored_trees(search_context& context, bool full_rule);

}  // namespace zeb
