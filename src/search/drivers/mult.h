// Replicated searches: randomised Wagner trees, each followed by branch swapping.
#pragma once

#include "search/drivers/drift.h"
#include "search/drivers/ratchet.h"
#include "search/moves/wagner.h"

namespace zeb {

/// The settings of `mult`.
struct mult_settings {
  enum swapper_kind : int { wagner_only, spr, tbr };
  int replications = 10;
  int swapper = tbr;
  bool ratchet = false;  // a stage after TBR, whatever the swapper is
  bool drift = false;    // likewise, after the ratchet
  int hold = 10;         // trees saved per replication
  bool keepall = false;  // keep the trees of all replications, not only the best
  int outfreq = 0;       // clips between two looks at the report; 0: by the size of the data
  addition_settings addition;
};
extern mult_settings mult;  // written by the command

/// How the stages after swapping go about it.
struct mult_stages {
  ratchet_settings ratchet;
  drift_settings drift;
  fuse_settings fuse;
};

/// What a run did, for its summary.
struct mult_result {
  int replications_done = 0;
  int hits = 0;              // replications that found the best score
  bool overflowed = false;   // a hit filled its share of the buffer
  bool buffer_full = false;  // the search ended since no tree could be stored
  double best = 0;           // unknown_score: none
};

/// Are branches swapped at all?
inline bool swaps(const mult_settings& options) {
  return options.swapper != mult_settings::wagner_only || options.ratchet || options.drift;
}

/// Runs the replications and leaves their trees in the context's slots. The seeds of the
/// replications are drawn from the context's generator. Errors: settings of the builder that can't
/// go together.
mult_result mult_search(search_context& context, const mult_settings& options,
                        const mult_stages& stages = {});

}  // namespace zeb
