// Replicated searches: randomised Wagner trees, each followed by branch swapping.
//
// The replications are done by themselves (`replication.h`), on as many cores as the user wants,
// and taken one after the other. One that comes to an optimum that was found before ends there.
#pragma once

#include "search/drivers/mult_settings.h"
#include "search/search_context.h"

namespace zeb {

/// What a run did, for its summary.
struct mult_result {
  int replications_done = 0;
  int hits = 0;              // replications that found the best score
  bool overflowed = false;   // a hit filled its share of the buffer
  bool buffer_full = false;  // the search ended since no tree could be stored
  double best = 0;           // unknown_score: none
};

/// Runs the replications and leaves their trees in the context's slots. The seeds of the
/// replications are drawn from the context's generator. Errors: settings of the builder that can't
/// go together.
mult_result mult_search(search_context& context, const mult_settings& options,
                        const mult_stages& stages = {});

}  // namespace zeb
