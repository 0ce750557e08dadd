// Branch swapping: SPR and TBR, as in Swofford and others (1996).
//
// A swap goes round the tree, from node to node, until a whole round has brought nothing better.
// What it does at each is a clip. The subtree above the node is detached, which frees its joint,
// and a wave repairs the node sets on both sides, as far as they change, until the halves stand as
// two trees of their own (incremental optimisation: Gladstein 1997). The score without the clip is
// then that of the whole tree less the cost of the joining that was cut. As the sets of both halves
// are exact, any reconnection costs one kernel call: the weighted fields in which the `branch` set
// of a branch of the subtree and that of a branch of the main tree have no state in common. No tree
// is made and no pass is run for it.
//
// Most reconnections are far too dear, so they are given up early: a kernel stops at the bound, the
// lowest cost met so far and what may be stored above it; and branches are tried in clusters of
// neighbours, by the union of their sets, which costs no more than any of them. TBR compares
// clusters of the subtree with clusters of the main tree, then branches with clusters, then
// branches. SPR has one branch of the subtree, the one it was cut by, and tries the main tree from
// the root down.
//
// What is within the bound and may be stored is noted, and made into a tree only when all branches
// for that rooting are through: the links are changed, the store looks for the same tree, and the
// links are changed back. In the end either a better place was found, where the clip is put for
// good, with a wave; or it goes home, and the words that were changed are copied back from a log,
// at a fraction of what a second wave would cost. Clusters outlive the clip: a wave only widens the
// unions of the branches it changes, which keeps them good, if less sharp, until they are made
// afresh.
#pragma once

#include <cstdint>
#include <span>

#include "search/moves/swap_task.h"
#include "search/search_context.h"

namespace zeb {

/// Swaps the tree `anc` (internal numbering, `nodes` entries), which becomes the improved one;
/// returns its score. Node sets are valid for the result, also after an interrupt. Errors: internal
/// checks only.
double tbr_swap(search_context& context, std::span<std::int32_t> anc, const swap_task& task);
double spr_swap(search_context& context, std::span<std::int32_t> anc, const swap_task& task);
using swapper = double (*)(search_context&, std::span<std::int32_t>, const swap_task&);

}  // namespace zeb
