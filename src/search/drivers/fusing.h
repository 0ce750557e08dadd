// Fusing: trees of a pool take over from each other what the other has better (Moilanen 1999).
//
// Each round takes one tree as the target and goes through the others in random order; the target
// takes over clades of each that make it better, is swapped, and joins the pool as a further tree.
#pragma once

#include <vector>

#include "search/drivers/hybrid.h"
#include "search/search_context.h"

namespace zeb {

/// The settings of `tfuse`, and of `hybrid`.
struct fuse_settings {
  bool equals = false;    // also exchanges that leave the score as it is
  bool beststart = true;  // the first target is the best tree
  bool choose = false;    // of the exchanges between two trees only the one that gains most
  bool repeat = false;    // a pair again until it has nothing to exchange
  bool swap = true;       // TBR on what comes of a round
  int minfork = 3;        // fewest branches at the consensus node of a clade
  int rounds = 5;
  bool keepall = true;  // all trees made are kept, not only better ones
  int xroot = 0;        // random rootings by which each pair is compared again

  // -- of the command --
  bool hybridize = false;  // in place of fusing
  hybrid_settings hybrid;
  double picktype = 0;  // below this exchange score trees are hybridised, else fused; 0: no choice
};
extern fuse_settings fusing;  // written by the command

struct fuse_task {
  std::vector<int> slots;   // the pool: at least two
  double target_score = 0;  // stop at this score or a better one; 0: none
  bool reseeds = true;      // the generator starts from the user's seed
  bool shows_rounds = true;
};

struct fuse_result {
  double best = unknown_score;
  int rounds = 0;  // done
  bool buffer_full = false;
};

/// Fuses; trees made are stored in the context's slots.
fuse_result fuse_trees(search_context& context, const fuse_settings& options,
                       const fuse_task& task);

}  // namespace zeb
