// The settings of replicated searches.
#pragma once

#include "search/drivers/drift.h"
#include "search/drivers/fusing.h"
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

/// Are branches swapped at all?
inline bool swaps(const mult_settings& options) {
  return options.swapper != mult_settings::wagner_only || options.ratchet || options.drift;
}

}  // namespace zeb
