// Branch swapping on the trees of the buffer.
#pragma once

#include <string>

namespace zeb {

/// What a run did, for its summary.
struct bbreak_result {
  double best = 0;
  bool interrupted = false;
  std::string not_swapped;     // trees left unswapped, "4", "4-9"; empty: none
  int equal_by_full_rule = 0;  // trees dropped by drop_equal_by_full_rule
  int full_at = -1;            // the tree that was swapped when the buffer became full
};

/// Swaps each tree, those that are found as well, inside a search_session; the buffer keeps the
/// best (and what `subopt` allows). There must be trees.
bbreak_result swap_buffer();

}  // namespace zeb
