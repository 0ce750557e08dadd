// The exact search: all best trees, with a guarantee, by branch and bound (Hendy and Penny 1982).
#pragma once

#include <cstdint>

#include "search/search_context.h"

namespace zeb {

/// The choices of `ienum`. Results don't depend on the first two.
struct exact_settings {
  bool look_ahead = true;   // bounds count what taxa to come are sure to add
  bool keep_places = true;  // places too dear for a taxon aren't tried again further down
  bool sample = false;      // a full buffer goes on as a random sample
};

struct exact_result {
  double best = 0;
  std::int64_t seen = 0;    // sampling: trees found
  bool overflowed = false;  // there was no room for some of the trees
  int percent = 100;        // done before an interrupt; -1 unknown
  std::int64_t nodes = 0;   // partial trees looked at
};

/// Finds all trees within the context's `suboptimal` of the best and leaves them in its slots,
/// which must be empty. Constraints are obeyed. Errors: constraints that no tree fulfils.
exact_result find_all_best_trees(search_context& context, const exact_settings& how);

}  // namespace zeb
