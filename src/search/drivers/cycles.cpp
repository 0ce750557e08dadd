#include "search/drivers/cycles.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "base/interrupts.h"
#include "console/settings.h"
#include "engine/passes/passes.h"
#include "search/drivers/auto_constraint.h"
#include "search/drivers/seed_sequence.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"
#include "search/store/tree_identity.h"

namespace zeb {
namespace {

constexpr int fewest_to_fuse = 3;  // of new trees

/// Keeps what the cycles of one run find.
class cycle_keeper {
 public:
  /// Scores the tree where the run begins.
  cycle_keeper(search_context& context, std::span<std::int32_t> tree, const cycle_settings& wanted,
               const cycle_task& task);

  /// A cycle ended with the tree at this score, or was stopped there.
  void end_cycle(double score);
  /// With the tree at this score, is the run over?
  bool is_over(double score) const;
  /// Fuses the trees found, if that is due. True: the tree in hand became a better one.
  bool fuse_if_due(bool is_last);
  /// The run ends.
  const cycle_result& finish();
  cycle_result& result() { return result_; }

 private:
  bool has_slots() const { return task_.first_slot >= 0; }
  score_kind kind() const { return kind_of_scores(context_.data); }
  void take_best(double score);
  void store(double score);
  bool fuses() const { return has_slots() && wanted_.fusefreq > 0; }
  bool take_fused(std::span<const std::int32_t> in_hand);
  bool note_cycle(double score);
  void drop_worse();

  search_context& context_;
  std::span<std::int32_t> tree_;
  const cycle_settings& wanted_;
  const cycle_task task_;
  cycle_result result_;
  std::vector<std::int32_t> held_best_;  // without slots
  int cycles_since_fusing_ = 0;
  int stored_since_fusing_ = 0;
};

cycle_keeper::cycle_keeper(search_context& context, std::span<std::int32_t> tree,
                           const cycle_settings& wanted, const cycle_task& task)
    : context_(context), tree_(tree), wanted_(wanted), task_(task) {
  result_.best = tree_length(context.data, tree);
  if (!has_slots()) held_best_.assign(tree.begin(), tree.end());
  if (context.best_score < 0 || is_better_score(result_.best, context.best_score, kind())) {
    context.best_score = result_.best;
  }
  note_score(context, result_.best);
}

void cycle_keeper::take_best(double score) {
  result_.best = score;
  if (is_better_score(score, context_.best_score, kind())) context_.best_score = score;
  note_score(context_, score);
}

void cycle_keeper::drop_worse() {
  if (!has_slots()) return;
  purge_above(context_, result_.best + context_.rules.suboptimal, task_.first_slot);
}

/// A full buffer costs worse trees, never the best.
void cycle_keeper::store(double score) {
  if (!has_slots()) {
    if (is_within_bound(score, result_.best, kind()))
      std::copy(tree_.begin(), tree_.end(), held_best_.begin());
    return;
  }
  if (!fuses() && !is_within_bound(score, result_.best + context_.rules.suboptimal, kind())) return;
  const int limit = std::min(context_.tree_limit, context_.trees.maxtrees);
  if (context_.trees.ntrees >= limit &&
      is_better_score(score, best_stored(context_, task_.first_slot), kind())) {
    purge_above(context_, score, task_.first_slot);
  }
  if (context_.trees.ntrees >= limit) return;
  stored_since_fusing_ += store_tree(context_, tree_, context_.trees.ntrees, score) ? 1 : 0;
}

/// Copies the best of what fusing left into the tree in hand, where it is better than all before;
/// else that tree stays what it was. With the slots full it may not be stored yet.
bool cycle_keeper::take_fused(std::span<const std::int32_t> in_hand) {
  std::vector<std::int32_t> fused(context_.working_tree.begin(), context_.working_tree.end());
  double score = tree_length(context_.data, fused);
  for (int t = task_.first_slot; t < context_.trees.ntrees; ++t) {
    if (record_of(context_, t).score > score) continue;
    score = record_of(context_, t).score;
    std::ranges::transform(slot_tree(context_, t), fused.begin(), plain_ancestor);
  }
  const bool is_better = is_better_score(score, result_.best, kind());
  std::ranges::copy(is_better ? std::span<const std::int32_t>(fused) : in_hand, tree_.begin());
  if (is_better) note_cycle(score);
  return is_better;
}

bool cycle_keeper::fuse_if_due(bool is_last) {
  if (!fuses() || (++cycles_since_fusing_ < wanted_.fusefreq && !is_last)) return false;
  cycles_since_fusing_ = 0;
  // Better ones may have taken the place of those that were stored.
  const int left = context_.trees.ntrees - task_.first_slot;
  if (std::min(std::exchange(stored_since_fusing_, 0), left) < fewest_to_fuse) return false;
  const int stage = context_.shown.stage;
  // The fuser works in the context's working tree, which may be that of the cycles.
  const std::vector<std::int32_t> in_hand(tree_.begin(), tree_.end());
  fuse_settings how = task_.fuse;
  how.rounds = wanted_.fuse_rounds;
  fuse_task pool{.slots = {}, .reseeds = false, .shows_rounds = false};
  for (int t = task_.first_slot; t < context_.trees.ntrees; ++t) pool.slots.push_back(t);
  if (static_cast<int>(pool.slots.size()) < fewest_to_fuse)
    return false;  // better trees made others go
  fuse_trees(context_, how, pool);
  context_.shown.stage = stage;
  const bool is_better = take_fused(in_hand);
  if (is_better || wanted_.dumpfuse) drop_worse();
  if (is_better) store(result_.best);
  stored_since_fusing_ = 0;
  return is_better;
}

/// What a cycle, or fusing, ended with. Is it better than all before?
bool cycle_keeper::note_cycle(double score) {
  const bool is_better = is_better_score(score, result_.best, kind());
  if (is_better) {
    take_best(score);
    result_.hits = 0;
  }
  if (is_same_score(score, result_.best, kind()) && ++result_.hits == 1) {
    result_.first_hit = result_.cycles;
  }
  return is_better;
}

void cycle_keeper::end_cycle(double score) {
  ++result_.cycles;
  if (note_cycle(score) && !fuses()) drop_worse();
  store(score);
  context_.shown.current_tree = std::max(context_.trees.ntrees - 1, 0);
  const bool is_due = settings.status_replications > 0 && task_.counts_cycles &&
                      result_.cycles % settings.status_replications == 0;
  report_status(context_, score, is_due);
}

bool cycle_keeper::is_over(double score) const {
  return interrupted() ||
         (wanted_.findscore > 0 && is_within_bound(score, wanted_.findscore, kind()));
}

const cycle_result& cycle_keeper::finish() {
  if (!has_slots()) std::copy(held_best_.begin(), held_best_.end(), tree_.begin());
  return result_;
}

}  // namespace

cycle_result run_cycles(search_context& context, std::span<std::int32_t> tree,
                        const cycle_settings& wanted, const cycle_task& task,
                        const std::function<perturbed_tree(int cycle)>& perturb) {
  cycle_keeper keeper(context, tree, wanted, task);
  seed_sequence seeds(context.random, context.rules.seed_step);
  std::vector<std::int32_t> before;
  bool is_swapped = false;  // the tree in hand is the end of a swap
  double score = keeper.result().best;
  for (int cycle = 0; cycle < wanted.iterations; ++cycle) {
    if (task.counts_cycles) context.shown.replication = cycle + 1;
    context.random.seed(static_cast<unsigned>(seeds.current()));
    seeds.advance();
    const bool is_last = cycle + 1 == wanted.iterations;
    const bool is_free = wanted.autoconst == 0 || cycle % wanted.autoconst == 0 || is_last;
    if (!is_free) before.assign(tree.begin(), tree.end());
    const perturbed_tree done = perturb(cycle);
    if (interrupted()) {
      score = tree_length(context.data, tree);
    } else if (done.is_changed || !is_swapped) {
      std::optional<auto_constraint> constraint;
      if (!is_free) constraint.emplace(context, before, tree);
      score = tbr_swap(context, tree, {.clips_first = done.moved});
      is_swapped = is_free;
    }
    keeper.end_cycle(score);
    if (keeper.is_over(score)) break;
    if (keeper.fuse_if_due(is_last)) score = keeper.result().best;
    if (keeper.is_over(score)) break;
    if (done.is_cornered) {
      keeper.result().single_tree = true;
      break;
    }
  }
  return keeper.finish();
}

}  // namespace zeb
