#include "search/drivers/cycles.h"

#include <algorithm>
#include <vector>

#include "base/interrupts.h"
#include "console/settings.h"
#include "engine/passes/passes.h"
#include "search/drivers/seed_sequence.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"

namespace zeb {
namespace {

/// Keeps what the cycles of one run find.
class cycle_keeper {
 public:
  /// Scores the tree where the run begins.
  cycle_keeper(search_context& context, std::span<std::int32_t> tree, const cycle_settings& wanted,
               const cycle_task& task);

  /// A cycle ended with the tree at this score, or was stopped there. True: the run is over.
  bool end_cycle(double score);
  /// The run ends.
  const cycle_result& finish();
  cycle_result& result() { return result_; }

 private:
  bool has_slots() const { return task_.first_slot >= 0; }
  score_kind kind() const { return kind_of_scores(context_.data); }
  void take_best(double score);
  void store(double score);

  search_context& context_;
  std::span<std::int32_t> tree_;
  const cycle_settings& wanted_;
  const cycle_task task_;
  cycle_result result_;
  std::vector<std::int32_t> held_best_;  // without slots
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
  if (has_slots()) purge_above(context_, score + context_.rules.suboptimal, task_.first_slot);
}

/// A full buffer costs worse trees, never the best.
void cycle_keeper::store(double score) {
  if (!has_slots()) {
    if (is_within_bound(score, result_.best, kind()))
      std::copy(tree_.begin(), tree_.end(), held_best_.begin());
    return;
  }
  if (!is_within_bound(score, result_.best + context_.rules.suboptimal, kind())) return;
  const int limit = std::min(context_.tree_limit, context_.trees.maxtrees);
  if (context_.trees.ntrees >= limit &&
      is_better_score(score, best_stored(context_, task_.first_slot), kind())) {
    purge_above(context_, score, task_.first_slot);
  }
  if (context_.trees.ntrees < limit) store_tree(context_, tree_, context_.trees.ntrees, score);
}

bool cycle_keeper::end_cycle(double score) {
  ++result_.cycles;
  if (is_better_score(score, result_.best, kind())) {
    take_best(score);
    result_.hits = 0;
  }
  if (is_same_score(score, result_.best, kind()) && ++result_.hits == 1) {
    result_.first_hit = result_.cycles;
  }
  store(score);
  context_.shown.current_tree = std::max(context_.trees.ntrees - 1, 0);
  const bool is_due = settings.status_replications > 0 && task_.counts_cycles &&
                      result_.cycles % settings.status_replications == 0;
  report_status(context_, score, is_due);
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
  bool is_swapped = false;  // the tree in hand is the end of a swap
  double score = keeper.result().best;
  for (int cycle = 0; cycle < wanted.iterations; ++cycle) {
    if (task.counts_cycles) context.shown.replication = cycle + 1;
    context.random.seed(static_cast<unsigned>(seeds.current()));
    seeds.advance();
    const perturbed_tree done = perturb(cycle);
    if (interrupted()) {
      score = tree_length(context.data, tree);
    } else if (done.is_changed || !is_swapped) {
      score = tbr_swap(context, tree, {.clips_first = done.moved});
      is_swapped = true;
    }
    if (keeper.end_cycle(score)) break;
    if (done.is_cornered) {
      keeper.result().single_tree = true;
      break;
    }
  }
  return keeper.finish();
}

}  // namespace zeb
