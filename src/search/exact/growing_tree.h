// A tree that grows by one taxon at a time, and gives the last one up again: how a walk over all
// trees steps from one partial tree to the next. Each addition repairs the sets by a wave, whose
// changes are noted, and taking the taxon back copies them from the notes.
#pragma once

#include <vector>

#include "base/arena.h"
#include "engine/search_data.h"

namespace zeb {

/// The tree in work of a data set, while it grows. Terminals that aren't in the tree have ancestor
/// 0, and the root's entry is the node that the next addition uses, as builders leave them.
class growing_tree {
 public:
  explicit growing_tree(search_data& data);
  ~growing_tree();
  growing_tree(const growing_tree&) = delete;
  growing_tree& operator=(const growing_tree&) = delete;

  /// The tree of terminals 0, `a` and `b`, with all its sets; returns its score.
  double begin(int a, int b);
  /// Puts a terminal on the branch above `branch`, which is any node but the root and terminal 0.
  void add(int taxon, int branch);
  /// Takes back what was added last: all sets are as before.
  void take_back();
  /// The same without sets, for trees that are only looked at or stored.
  void link(int taxon, int branch);
  void unlink(int taxon);

  int taxa() const { return 3 + static_cast<int>(added_.size()); }
  /// The internal node that the next addition uses.
  int next_joint() const { return data_.tree.anc[static_cast<std::size_t>(data_.n)]; }

 private:
  struct addition {
    int taxon;
    int notes;  // in the undo log before it
  };
  search_data& data_;
  arena_scope memory_;
  undo_log log_of_swaps_;  // put back at the end
  std::vector<addition> added_;
};

}  // namespace zeb
