// What makes of the trees of one set better ones: they are fused, or crossed, with each other.
#pragma once

#include <functional>
#include <vector>

#include "search/combined/combined_settings.h"
#include "search/search_context.h"

namespace zeb {

/// Who is told what is found, and says when it must end.
struct pool_watch {
  std::function<void(double score)> found;
  std::function<bool()> is_over;
};

/// The trees in the slots from `first` on. What is found is told to the watch.
class set_pool {
 public:
  set_pool(search_context& context, const combined_settings& options, const combined_stages& stages,
           const pool_watch& watch)
      : context_(context), options_(options), stages_(stages), watch_(watch) {}

  void begin(int first) { first_ = first; }
  int first() const { return first_; }

  /// Ends at the target, 0 for none.
  void fuse(double target, int rounds) { fuse_in_manner(target, rounds, stages_.fuse); }
  void hybridize(double target);
  /// Trees that are as good come of others that take over what the best have better.
  void multiply();
  /// By what the trees could exchange: is it better to cross them than to fuse them? Tells which.
  bool prefers_hybrids() const;

  /// The slot of the first of the best trees; there must be one.
  int best_slot() const;
  /// Drops the trees after the first `count` of all slots.
  void keep_first(int count);

 private:
  void fuse_in_manner(double target, int rounds, fuse_settings how);
  std::vector<int> slots() const;
  int free_slots() const { return context_.trees.maxtrees - context_.trees.ntrees; }
  double score_to_stop_at(double target) const {
    return options_.giveupscore > 0 ? options_.giveupscore : target;
  }

  search_context& context_;
  const combined_settings& options_;
  const combined_stages& stages_;
  const pool_watch& watch_;
  int first_ = 0;
};

}  // namespace zeb
