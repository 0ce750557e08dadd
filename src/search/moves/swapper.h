// Branch swapping: SPR and TBR. A subtree is clipped, the node sets of both halves are repaired,
// and from then on each reconnection costs one kernel call with an early exit: the weighted fields
// in which the `branch` sets of the two branches fail to meet. Only accepted moves change the tree.
//
// Methods: subtree pruning and regrafting, and tree bisection and reconnection (Swofford and others
// 1996); lengths of reconnections from the sets of the two branches, without a pass over the tree
// (Farris 1970). Neighbouring branches form clusters: a union of their sets that costs too much
// already rules out all of them.
#pragma once

#include <cstdint>
#include <span>

#include "engine/search_data.h"

namespace zeb {

/// The settings of `bbreak`.
struct swap_settings {
  bool use_tbr = true;
  bool fill_only = false;    // stop as soon as the buffer is full
  bool mulpars = true;       // save equally good trees
  bool safe_unclip = false;  // a full pass after every move
  bool skip_spr = true;      // leave out the SPR phase on a single tree
  int preproc = 0;           // 0 off; 1 on; 2 armed for the next swap of a single tree
  bool stratified = false;   // landmarks only
  int move_limit = 0;        // TBR within so many nodes of the clip's place; 0 no limit
  bool random_clip = false;  // clips in random order, from the current seed
  int use_inters = 0;        // union/intersection clusters: 0 off, 1, 2 sorted
  int cluster_size = 15;     // nodes aimed at in a cluster; 3 to 1000
  int outfreq = 0;           // clips between two reports; 0: by the size of the data
};
extern swap_settings swapping;

/// Swaps the tree `anc` (internal numbering, `nodes` entries), which becomes the improved one;
/// returns its score. `first_slot` is the first slot of the buffer that this search may use.
/// `multi` 0: only `anc` improves. Above 0: trees within the limit fill the buffer up to `multi`
/// trees. Below 0: one tree, a first pass that starts with clips of 3 terminals or more.
/// Node sets are valid for the result, also after an interrupt. Errors: internal checks only.
double tbr_swap(std::span<std::int32_t> anc, int first_slot, int multi);
double spr_swap(std::span<std::int32_t> anc, int first_slot, int multi);
using swapper = double (*)(std::span<std::int32_t> anc, int first_slot, int multi);

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

/// Enumeration: as long as one lives, the swappers apply no move and hand every reconnection with a
/// score up to that of the tree + `search_settings.suboptimal` to `receive`.
class move_enumeration {
 public:
  using store_function = void (*)(void* receiver, const met_move& move);
  /// `leave_alone` (by node; may be empty): nodes marked above 1 aren't clipped.
  move_enumeration(store_function receive, void* receiver,
                   std::span<const std::uint8_t> leave_alone);
  ~move_enumeration();
  move_enumeration(const move_enumeration&) = delete;
  move_enumeration& operator=(const move_enumeration&) = delete;
  static const move_enumeration* active();
  void meet(const met_move& move) const { store_(receiver_, move); }
  bool may_clip(int node) const {
    return leave_alone_.empty() || leave_alone_[static_cast<std::size_t>(node)] < 2;
  }

 private:
  store_function store_;
  void* receiver_;
  std::span<const std::uint8_t> leave_alone_;
  const move_enumeration* outer_;
};

}  // namespace zeb
