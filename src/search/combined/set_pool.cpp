#include "search/combined/set_pool.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "search/store/stored_trees.h"

namespace zeb {

std::vector<int> set_pool::slots() const {
  std::vector<int> all(at(std::max(0, context_.trees.ntrees - first_)));
  std::iota(all.begin(), all.end(), first_);
  return all;
}

int set_pool::best_slot() const {
  int best = first_;
  for (const int t : slots())
    if (record_of(context_, t).score < record_of(context_, best).score) best = t;
  return best;
}

void set_pool::fuse_in_manner(double target, int rounds, fuse_settings how) {
  how.rounds = std::min(rounds, free_slots());
  const fuse_task task{.slots = slots(),
                       .target_score = score_to_stop_at(target),
                       .reseeds = false,
                       .shows_rounds = false};
  if (task.slots.size() >= 2 && how.rounds > 0 && !watch_.is_over())
    watch_.found(fuse_trees(context_, how, task).best);
}

/// As many as told, but no more than a pool of this size can make use of.
void set_pool::hybridize(double target) {
  constexpr int pairings_of_a_tree = 10;
  const hybrid_task task{.slots = slots(),
                         .target_score = score_to_stop_at(target),
                         .reseeds = false,
                         .shows_rounds = false};
  hybrid_settings how = stages_.fuse.hybrid;
  how.pairings = std::min(how.pairings, pairings_of_a_tree * static_cast<int>(task.slots.size()));
  if (task.slots.size() >= 2 && !watch_.is_over())
    watch_.found(hybridize_trees(context_, how, task).best);
}

void set_pool::multiply() {
  const double best = best_stored(context_, first_);
  const bool all_best = std::ranges::all_of(slots(), [this, best](int t) {
    return is_same_score(record_of(context_, t).score, best, kind_of_scores(context_.data));
  });
  if (all_best) return;
  fuse_settings how = stages_.fuse;
  how.beststart = false;
  how.equals = true;
  fuse_in_manner(0, options_.fuse, how);
}

bool set_pool::prefers_hybrids() const {
  const double score = exchange_score(context_, slots(), stages_.fuse.minfork);
  const bool hybrids = score < options_.picktype;
  if (!context_.shown.silent) {
    emit("  NOTE: Picking ", hybrids ? "tree hybridization " : "tree fusing ",
         text_of("to improve the trees found (score %.3f)\n", score));
  }
  return hybrids;
}

void set_pool::keep_first(int count) {
  std::vector<std::uint8_t> keep(at(context_.trees.ntrees), 1);
  if (count >= context_.trees.ntrees) return;
  std::fill(keep.begin() + count, keep.end(), std::uint8_t{0});
  keep_trees(context_, keep);
}

}  // namespace zeb
