// What independent sets of replications agree on: the strict consensus of the best trees found so
// far. While further sets bring trees of the same score it can only lose groups; once it has
// stopped to do so, more trees of that kind will hardly tell more.
#pragma once

#include <vector>

#include "search/combined/combined_settings.h"
#include "search/search_context.h"
#include "trees/tree_record.h"

namespace zeb {

class consensus_watch {
 public:
  /// With `consense` branches are collapsed by swapping, which takes its time, and a look is taken
  /// only now and then; without, those that may have no length are, after every hit.
  consensus_watch(search_context& context, const combined_settings& options);

  /// A hit ended, and all trees with this score that the slots hold count; with a better score than
  /// before all begins anew. True if a look was taken.
  bool note_hit(double score);
  /// Takes in what came since the last look.
  void look();

  /// Trees of this score moved to other slots, or were dropped: all are taken in again.
  void slots_changed() { seen_ = 0; }

  /// Looks in turn that found the same.
  int stable() const { return stable_; }
  int hits_to_next() const { return hits_to_next_; }
  /// Hits since the consensus changed.
  int hits_unchanged() const { return hits_ - hits_at_change_; }
  int groups() const;
  /// In matrix numbering, with polytomies; empty: no tree was taken in.
  const std::vector<tree_node>& tree() const { return tree_; }

 private:
  int interval() const;

  search_context& context_;
  const combined_settings& options_;
  double score_ = unknown_score;
  std::vector<tree_node> tree_;
  int seen_ = 0;  // slots before this one are taken in
  int hits_ = 0;
  int hits_at_change_ = 0;
  int hits_to_next_ = 0;
  int stable_ = 0;
};

}  // namespace zeb
