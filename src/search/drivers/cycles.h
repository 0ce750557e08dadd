// What ratchet and drift share: cycles of perturbing and repairing one tree, and the trees that are
// kept of them.
//
// A cycle leaves the tree in hand at a local optimum of the user's data, and the next one starts
// from there, better or worse. The best trees are stored on the way, or, where no slots are given,
// the best one is handed back.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "search/drivers/fusing.h"
#include "search/search_context.h"

namespace zeb {

/// The settings that ratchet and drift have in common.
struct cycle_settings {
  int iterations = 50;  // cycles
  int numsubs = 40;     // moves accepted in one perturbation
  bool equals = true;   // some cycles run without perturbation
  int giveup = 99;      // per cent of the nodes that a perturbation clips at most; 0 no limit
  int autoconst =
      0;             // all cycles but every Nth and the last are repaired under constraints; 0 none
  int fusefreq = 0;  // cycles between fusings of the trees found; 0 none
  int fuse_rounds = 3;
  bool dumpfuse = true;  // after fusing, drop trees that aren't good enough
  double findscore = 0;  // stop when this score or a better one is found; 0 never
};

/// What is asked of a run, beside its settings.
struct cycle_task {
  int first_slot = -1;         // trees are stored from this slot on; negative: nothing is stored
  bool counts_cycles = false;  // the progress line shows the cycle as its replication
  fuse_settings fuse;          // how trees are fused; the rounds are those of the cycles
};

struct cycle_result {
  double best = unknown_score;
  int cycles = 0;            // done
  int hits = 0;              // cycles that ended with the best score
  int first_hit = 0;         // the first of these, from 1; 0: none, the tree given was better
  bool single_tree = false;  // ended since no other tree can be reached without a worse one
};

/// What a perturbation did to the tree.
struct perturbed_tree {
  bool is_changed = true;
  bool is_cornered = false;         // no other tree can be reached: the run is to end
  std::vector<std::int32_t> moved;  // nodes where it was changed: the repair begins there
};

/// Runs cycles from `tree` (internal numbering, not a slot), which becomes the tree in hand at the
/// end, or, without slots, the best one. `perturb(cycle)` changes the tree; the generator is
/// seeded for it, with a seed of its own for each cycle, drawn from the generator as it stands.
cycle_result run_cycles(search_context& context, std::span<std::int32_t> tree,
                        const cycle_settings& wanted, const cycle_task& task,
                        const std::function<perturbed_tree(int cycle)>& perturb);

}  // namespace zeb
