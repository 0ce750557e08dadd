// The settings of the combined search, and the levels of effort that set most of them at once.
#pragma once

#include "search/drivers/drift.h"
#include "search/drivers/fusing.h"
#include "search/drivers/ratchet.h"
#include "search/drivers/rebuild.h"
#include "search/sectors/sectors.h"

namespace zeb {

/// The settings of `xmult`.
struct combined_settings {
  // -- hits --
  int hits = 1;
  int replications = 4;    // of each hit
  double targetscore = 0;  // 0: none; the best score found is the one to hit
  bool update = true;      // a score better than the target becomes the target
  double giveupscore = 0;  // a hit ends as soon as this score or a better one is found; 0 never

  // -- replications --
  bool rss = true;  // random sectors
  bool css = true;  // sectors by the groups of the constraints, those of the user or of `autoconst`
  bool xss = false;  // exclusive sectors
  int rebuild = 0;   // cycles of each, in this order
  int ratchet = 0;
  int drift = 5;
  int hold = 1;         // trees that ratchet and drift may save in one replication
  int autoconst = 1;    // every second one begins with the clades shared with the tree before: 0
                        // not, after 1 Wagner, 2 SPR, 3 TBR
  bool xmix = true;     // so do all that are made after fusing failed
  bool prvmix = false;  // ... and those of the first hit, with the last tree in memory
  addition_settings addition;

  // -- trees of a hit --
  int fuse = 1;              // rounds of fusing; 0 none
  int gfuse = 0;             // every so many hits all trees are fused; 0 never
  int hfuse = 0;             // ... are hybridised
  bool hybrid = false;       // hybridise them, before fusing
  double hybrid_factor = 5;  // by which there are more replications for that
  double picktype = 0;       // below this exchange score hybridise, else fuse; 0: no choice
  bool dumpfuse = true;      // after fusing that brought nothing, drop what it produced
  int retouch = 0;           // after that, improve the best tree so many times before making others
  bool multiply = true;      // when the score is hit, fuse the others with the best for more trees
  bool keepall = false;      // keep the trees of all replications

  // -- when it is enough, besides the hits --
  int consense = 0;    // go on until the consensus was found the same so many times; 0 don't look
  int conbase = 5;     // hits to the first look, and between two at least
  int confactor = 75;  // per cent of the hits since it last changed, to the next look
  int conmax = 12;     // hits between two looks, at most; 0 no limit

  // -- effort --
  double level = -1;         // all of this set at once, and the sectors; negative: unset
  int chklevel = 0;          // hits between changes of the effort; 0 never
  bool moves_level = true;   // those change the whole level, if there is one
  double level_step = 0.25;  // ... by this
  bool verbose = false;      // tell what each hit did
};
extern combined_settings combined;  // written by the command

/// How the stages go about it; what `combined_settings` says of them holds over this.
struct combined_stages {
  sector_settings sectors;
  ratchet_settings ratchet;
  drift_settings drift;
  fuse_settings fuse;
  rebuild_settings rebuild;
};

constexpr double highest_level = 10;

/// Sets everything at once by a level of effort, 0 to 10, for so many taxa.
void set_level(combined_settings& options, sector_settings& sector, double level, int taxa);

/// How a search that goes on changes its effort.
enum class effort_change { same, less, more };
/// By how many of `period` sets failed: most, and the search is too weak; few, and it takes more
/// time than it must. `also_replications`: their number changes, too, where no level is moved.
effort_change adjust_effort(combined_settings& options, sector_settings& sector, int failures,
                            int period, bool also_replications, int taxa);

}  // namespace zeb
