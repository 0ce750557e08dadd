// The ratchet (Nixon 1999): swapping under weights changed at random, then under the true ones.
#pragma once

#include "search/drivers/cycles.h"

namespace zeb {

/// The settings of `ratchet`.
struct ratchet_settings {
  cycle_settings cycles;
  int upfactor = 4;          // per cent of the characters that weigh double
  int downfactor = 4;        // per cent that weigh nothing
  bool automatic = false;    // strength by the size of the data, in place of the factors
  bool traditional = false;  // perturbation is a whole TBR swap of the reweighted data
};
extern ratchet_settings ratchet;  // written by the command

/// What `automatic` stands for: a share of the characters that falls with the square root of their
/// number, so that in small data some are drawn at all and in large ones the perturbed tree isn't
/// another one altogether; and a move for every eighth taxon, if that is more.
ratchet_settings fitted_to(const ratchet_settings& options, int taxa, int characters);

/// Runs the cycles from `tree` (internal numbering, not a slot), whose seeds are drawn from the
/// context's generator, and leaves there the tree in hand, or, without slots, the best one.
cycle_result ratchet_search(search_context& context, std::span<std::int32_t> tree,
                            const ratchet_settings& options, const cycle_task& task);

}  // namespace zeb
