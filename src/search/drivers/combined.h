// The combined search: sets of replications (building, swapping, sectors, ratchet, drift) whose
// trees are fused, until the best score was hit as often as wanted.
//
// A hit is one set of independent replications that came to the best score. Whether a score is the
// best that there is can't be known; that several sets came to it, and none to a better one, is
// what speaks for it.
#pragma once

#include "search/drivers/drift.h"
#include "search/drivers/fusing.h"
#include "search/drivers/ratchet.h"
#include "search/drivers/sectors.h"
#include "search/moves/wagner.h"
#include "search/search_context.h"

namespace zeb {

/// The settings of `xmult`.
struct combined_settings {
  int hits = 1;
  int replications = 4;    // of each hit
  double targetscore = 0;  // 0: none; the best score found is the one to hit
  bool update = true;      // a score better than the target becomes the target
  double giveupscore = 0;  // stop as soon as this score or a better one is found; 0 never
  bool rss = true;         // random sectors
  bool xss = false;        // exclusive sectors
  int fuse = 1;            // rounds of fusing; 0 none
  int gfuse = 0;           // every so many hits all trees are fused; 0 never
  int ratchet = 0;         // cycles in a replication
  int drift = 5;
  bool keepall = false;  // keep the trees of all replications
  bool multiply = true;  // when the score is hit, look for more trees by fusing the others with it
  bool verbose = false;  // tell what each hit did
  double level = -1;     // all of this set at once, and the sectors; negative: unset
  addition_settings addition;
};
extern combined_settings combined;  // written by the command

/// How the stages go about it; what `combined_settings` says of them holds over this.
struct combined_stages {
  sector_settings sectors;
  ratchet_settings ratchet;
  drift_settings drift;
  fuse_settings fuse;
};

struct combined_result {
  double best = unknown_score;
  int hits = 0;                // sets that came to the best score
  int sets = 0;                // done
  int replications = 0;        // in all
  bool gave_up = false;        // the score to give up at was found
  bool buffer_full = false;    // no tree could be stored any more
  double seconds_to_best = 0;  // from the start to the last improvement
};

/// Runs the search and leaves its trees in the context's slots. The seeds are drawn from the
/// context's generator.
combined_result combined_search(search_context& context, const combined_settings& options,
                                const combined_stages& stages);

/// Sets everything at once by a level of effort, 0 to 10, for so many taxa.
void set_level(combined_settings& options, sector_settings& sector, double level, int taxa);

}  // namespace zeb
