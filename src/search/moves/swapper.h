// Branch swapping: SPR and TBR. A subtree is clipped, the node sets of both halves are repaired,
// and from then on each reconnection costs one kernel call with an early exit: the weighted fields
// in which the `branch` sets of the two branches fail to meet. Only accepted moves change the tree.
//
// Rearrangements as in Swofford and others (1996); repair of the sets after a clip instead of full
// passes, as in Gladstein (1997). Branches are compared in clusters first, by the union of the sets
// of each: see clusters.h.
#pragma once

#include <cstdint>
#include <span>

#include "search/search_context.h"

namespace zeb {

/// A reconnection met in enumeration mode. The tree in `data.tree` is in its clipped state.
struct met_move {
  const search_data* data;
  int clip;       // root of the clipped subtree
  int sister;     // branch of the main tree from which it was clipped
  int target;     // branch of the main tree to which it goes
  int home_root;  // branch of the subtree on which it is rooted
  int root;       // branch on which it would be rooted
  double score;   // of the tree that the move makes
  double tree_score;
};

/// Who is handed the reconnections of a swap that applies none.
struct move_enumeration {
  void (*meet)(void* receiver, const met_move& move);
  void* receiver;
  std::span<const std::uint8_t> leave_alone;  // by node, may be empty: 2 and more aren't clipped

  bool may_clip(int node) const {
    return leave_alone.empty() || leave_alone[static_cast<std::size_t>(node)] < 2;
  }
};

/// What is wanted of one swap.
struct swap_task {
  int first_slot = 0;  // first slot that this search may use
  // 0: only the tree improves. Above 0: trees within the limit fill the slots up to `multi` trees.
  // Below 0: one tree, a first pass that starts with clips of 3 terminals or more.
  int multi = 0;
  bool promising_first = false;  // begin with the clips that promise most; single trees only
  // Not null: no move is applied; every reconnection with a score up to that of the tree + the
  // context's `suboptimal` is handed over.
  const move_enumeration* enumeration = nullptr;
};

/// Swaps the tree `anc` (internal numbering, `nodes` entries), which becomes the improved one;
/// returns its score. Node sets are valid for the result, also after an interrupt. Errors: internal
/// checks only.
double tbr_swap(search_context& context, std::span<std::int32_t> anc, const swap_task& task);
double spr_swap(search_context& context, std::span<std::int32_t> anc, const swap_task& task);
using swapper = double (*)(search_context&, std::span<std::int32_t>, const swap_task&);

}  // namespace zeb
