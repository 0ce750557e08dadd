// Rebuilding: clades of a tree are cut off at random and put back one by one where they cost least,
// and the tree is swapped. Each cycle goes on from the tree of the one before; the best trees are
// kept, and crossed with each other from time to time.
#pragma once

#include <cstdint>
#include <span>

#include "search/drivers/hybrid.h"
#include "search/search_context.h"

namespace zeb {

/// The settings of `rebuild`.
struct rebuild_settings {
  int cycles = 4000;     // before each round of hybridisation
  int clip_least = 0;    // clades cut off in a cycle, from ...
  int clip_most = 0;     // ... to; 0: by `pclip`
  int pclip = 20;        // the same, per cent of the taxa
  int size = 1;          // terminals of the largest clade cut off; 0: by `psize`
  int psize = 10;        // the same, per cent of the taxa
  int reset = 0;         // cycles without a match until the best tree is taken up again; 0 never
  double excess = 5;     // a score so far above the best is no match
  int hybrid = 6;        // rounds of hybridisation; 0 none: one series of cycles
  int sample = 50;       // best trees kept for it, at least 2
  bool ancfirst = true;  // clades of more than two terminals go back before parts of them
  bool keepall = false;  // keep all trees made
  bool dump = true;      // after hybridisation, only a tenth of the sample stays
  double findscore = 0;  // stop at this score or a better one; 0 never
};
extern rebuild_settings rebuilding;  // written by the command

/// What is asked of a run, beside its settings.
struct rebuild_task {
  // Trees are stored from this slot on, which is the first free one. Negative: nothing is stored,
  // there is no hybridisation, and the tree given becomes the best one.
  int first_slot = -1;
  bool counts_cycles = false;  // the progress line shows the cycle as its replication
  hybrid_settings hybrid;      // how trees are hybridised
};

struct rebuild_result {
  double best = unknown_score;
  int cycles = 0;  // done
  int hybridizations = 0;
  int hits = 0;              // cycles that ended with the best score
  bool buffer_full = false;  // trees were lost for want of room
};

/// Rebuilds `tree` (internal numbering, not a slot), which becomes the tree of the last cycle or,
/// without slots, the best one. Seeds are drawn from the generator as it stands. Constraints aren't
/// obeyed: the caller refuses them.
rebuild_result rebuild_search(search_context& context, std::span<std::int32_t> tree,
                              const rebuild_settings& options, const rebuild_task& task);

}  // namespace zeb
