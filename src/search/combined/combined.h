// The combined search: sets of replications (building, swapping, sectors, ratchet, drift) whose
// trees are fused, until the best score was hit as often as wanted.
//
// A hit is one set of independent replications that came to the best score. Whether a score is the
// best that there is can't be known; that several sets came to it, and none to a better one, is
// what speaks for it. What their trees agree on may be taken as a second sign: the search then goes
// on until the consensus of the best trees has settled.
#pragma once

#include <vector>

#include "search/combined/combined_settings.h"
#include "search/search_context.h"
#include "trees/tree_record.h"

namespace zeb {

struct combined_result {
  double best = unknown_score;
  int hits = 0;                // sets that came to the best score
  int sets = 0;                // done
  int replications = 0;        // in all
  int best_replication = 0;    // that of the last improvement; trees fused count to the last one
  double seconds_to_best = 0;  // from the start to the last improvement
  bool buffer_full = false;    // no tree could be stored any more
  std::vector<tree_node> consensus;  // of the best trees, in matrix numbering; empty: none was made
  int consensus_groups = 0;
  int hits_unchanged = 0;  // hits since the consensus last changed
};

/// Runs the search and leaves its trees in the context's slots. The seeds are drawn from the
/// context's generator. `options` and the sectors of `stages` change where the search adjusts its
/// effort.
combined_result combined_search(search_context& context, combined_settings& options,
                                combined_stages& stages);

}  // namespace zeb
