#include "search/drivers/cycles.h"

#include <algorithm>

#include "base/interrupts.h"
#include "console/settings.h"
#include "engine/passes/passes.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"

namespace zeb {

cycle_keeper::cycle_keeper(search_context& context, std::span<std::int32_t> tree,
                           const cycle_settings& wanted, const cycle_task& task)
    : context_(context), tree_(tree), settings_(wanted), task_(task) {
  result_.best = tree_length(context.data, tree);
  if (!has_slots()) held_best_.assign(tree.begin(), tree.end());
  if (context.best_score < 0 || is_better_score(result_.best, context.best_score, kind())) {
    context.best_score = result_.best;
  }
  note_score(context, result_.best);
}

void cycle_keeper::begin_cycle(int number) {
  if (task_.counts_cycles) context_.shown.replication = number + 1;
}

void cycle_keeper::take_best(double score) {
  result_.best = score;
  if (is_better_score(score, context_.best_score, kind())) context_.best_score = score;
  note_score(context_, score);
  if (has_slots()) {
    purge_above(context_, score + context_.rules.suboptimal, task_.first_slot);
  } else {
    std::copy(tree_.begin(), tree_.end(), held_best_.begin());
  }
}

/// A full buffer costs worse trees, never the best.
void cycle_keeper::store(double score) {
  if (!has_slots()) return;
  if (!is_within_bound(score, result_.best + context_.rules.suboptimal, kind())) return;
  const int limit = std::min(context_.tree_limit, context_.trees.maxtrees);
  if (context_.trees.ntrees >= limit &&
      is_better_score(score, best_stored(context_, task_.first_slot), kind())) {
    purge_above(context_, score, task_.first_slot);
  }
  if (context_.trees.ntrees >= limit) return;
  store_tree(context_, tree_, context_.trees.ntrees, score);
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
  const bool is_due =
      settings.status_replications > 0 && result_.cycles % settings.status_replications == 0;
  report_status(context_, score, is_due);
  return interrupted() ||
         (settings_.findscore > 0 && is_within_bound(score, settings_.findscore, kind()));
}

const cycle_result& cycle_keeper::finish() {
  if (!has_slots()) std::copy(held_best_.begin(), held_best_.end(), tree_.begin());
  return result_;
}

}  // namespace zeb
