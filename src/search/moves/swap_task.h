// What a swap is asked for.
#pragma once

#include <cstdint>
#include <span>

#include "engine/search_data.h"

namespace zeb {

struct perturbation;

/// A place of a clip: what it is joined by, and what it goes to.
struct clip_place {
  join_side clip;
  join_side main;
};

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
  clip_place home;  // where the clip was, and where it goes, for relative_fit_difference
  clip_place there;
};

/// Who is handed the reconnections of a swap that applies none.
struct move_enumeration {
  void (*meet)(void* receiver, const met_move& move);
  void* receiver;
  std::span<const std::uint8_t> leave_alone;  // by node, may be empty: 2 and more aren't clipped
  // Called before each clip, if not null: `done` of the tree's nodes have been clipped. May ask the
  // swap to stop, as any look for an interrupt does.
  void (*progress)(void* receiver, int done) = nullptr;

  bool may_clip(int node) const {
    return leave_alone.empty() || leave_alone[static_cast<std::size_t>(node)] < 2;
  }
};

/// A swap of a tree whose clips are shared out among several processes: it ends when this one's
/// share has brought nothing better.
struct swap_share {
  std::span<const std::uint8_t> clips;  // by node: 1 is clipped by this process
  /// Called before each clip, when the tree in `data.tree` is whole. True: the swap is to end.
  bool (*look)(void* receiver, const search_data& data, double score);
  void* receiver;
};

/// What is wanted of one swap.
struct swap_task {
  int first_slot = 0;  // first slot that this search may use
  // 0: only the tree improves. Above 0: trees within the limit fill the slots up to `multi` trees.
  // Below 0: one tree, a first pass that starts with clips of 3 terminals or more.
  int multi = 0;
  // With `multi` above 0: trees are stored, better ones too, but no move is applied, so that all
  // the neighbours of this very tree are met.
  bool stay = false;
  bool promising_first = false;  // begin with the clips that promise most; single trees only
  // Nodes to begin with, where improvements are likely; the others come in order.
  std::span<const std::int32_t> clips_first = {};
  // Not null: no move is applied; every reconnection with a score up to that of the tree + the
  // context's `suboptimal` is handed over.
  const move_enumeration* enumeration = nullptr;
  // Not null: a perturbing swap of a single tree, which may end above where it began.
  perturbation* perturbing = nullptr;
  // Not null: others clip the other nodes of the tree.
  const swap_share* share = nullptr;
};

}  // namespace zeb
