#include "search/drivers/bbreak.h"

#include <algorithm>

#include "base/interrupts.h"
#include "console/settings.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/store/filter.h"
#include "search/store/stored_trees.h"

namespace zeb {
namespace {

void take_best(search_context& context, double score) {
  context.best_score = score;
  context.score_limit = score + context.rules.suboptimal;
  note_score(context, score);
}

void keep_result(search_context& context, int slot, double score) {
  if (!is_better_score(score, record_of(context, slot).score, kind_of_scores(context.data))) return;
  // A copy of a tree that is there already isn't kept twice: the filter drops the old one.
  replace_tree(context, context.working_tree, slot, score);
}

}  // namespace

bbreak_result swap_stored_trees(search_context& context, bool full_rule) {
  const swap_settings& how = context.rules.swap;
  const score_kind kind = kind_of_scores(context.data);
  int& current = context.shown.current_tree;  // follows the tree when others before it go
  bbreak_result result;
  result.best = best_stored(context, 0);
  take_best(context, result.best);
  context.shown.stage = how.use_tbr ? stage_tbr : stage_spr;
  const int capacity = how.mulpars ? context.trees.maxtrees : 0;
  for (int t = 0; t < context.trees.ntrees; ++t) record_of(context, t).waits = true;
  begin_reports(context);
  report_status(context, result.best, false);
  int done = 0;  // the trees before this one were swapped
  const swapper swap = how.use_tbr ? tbr_swap : spr_swap;
  for (int t = 0; t < context.trees.ntrees && !interrupted(); ++t) {
    current = context.swapping_index = t;
    record_of(context, t).waits = false;
    fetch_tree(context, slot_tree(context, t));
    const double score =
        swap(context, context.working_tree,
             {.multi = capacity, .promising_first = !how.mulpars && how.promising_first});
    t = current;
    if (was_left(context, t, score, capacity)) {
      fetch_tree(context, slot_tree(context, t));
      swap(context, context.working_tree, {.multi = capacity, .stay = true});
    }
    if (!how.mulpars) keep_result(context, t, score);
    if (settings.status_trees > 0 && (t + 1) % settings.status_trees == 0) {
      report_status(context, score, true);
    }
    const bool is_full = capacity > 0 && context.trees.ntrees >= capacity;
    if (is_full && result.full_at < 0) result.full_at = t;
    if (is_better_score(score, result.best, kind)) {
      result.best = score;
      take_best(context, score);
      if (capacity > 0 && !is_full) result.full_at = -1;
      if (context.rules.suboptimal == 0 && how.mulpars) t = -1;
    }
    if (!interrupted()) done = t + 1;
    if (how.fill_only && context.trees.ntrees >= context.trees.maxtrees) break;
  }
  if (done < context.trees.ntrees) {
    result.not_swapped = std::to_string(done);
    if (done + 1 < context.trees.ntrees) {
      result.not_swapped += "-" + std::to_string(context.trees.ntrees - 1);
    }
  }
  context.swapping_index = -1;
  result.interrupted = interrupted();
  // An interrupt may come before a better tree that was stored has its turn.
  result.best = std::min(result.best, best_stored(context, 0));
  report_status(context, result.best, true);
  filter_by_score(context, result.best);
  if (full_rule) result.equal_by_full_rule = drop_equal_by_full_rule(context);
  return result;
}

}  // namespace zeb
