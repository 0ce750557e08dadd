#include "search/drivers/bbreak.h"

#include <algorithm>

#include "base/random.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/store/full_rule.h"
#include "search/store/stored_trees.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

tree_record& record_of(int slot) { return searching.tree_records[static_cast<std::size_t>(slot)]; }

double best_in_buffer() {
  double best = unknown_score;
  for (int t = 0; t < store.ntrees; ++t) best = std::min(best, record_of(t).score);
  return best;
}

void keep_result(int slot, double score) {
  if (score >= record_of(slot).score - score_rounding(*current_search_data)) return;
  // A copy of a tree that is there already isn't kept twice: the filter drops the old one.
  replace_tree(searching.anx, slot, score);
}

}  // namespace

bbreak_result swap_buffer() {
  bbreak_result result;
  result.best = best_in_buffer();
  searching.best_score = result.best;
  searching.score_limit = result.best + search_settings.suboptimal;
  searching.stage = swapping.use_tbr ? stage_tbr : stage_spr;
  const int capacity = swapping.mulpars ? store.maxtrees : 0;
  if (swapping.random_clip) reseed();
  randomness.random_seed = -1;
  for (int t = 0; t < store.ntrees; ++t) record_of(t).waits = true;
  begin_reports();
  report_status(result.best, false);
  int done = 0;  // the trees before this one were swapped
  const swapper swap = swapping.use_tbr ? tbr_swap : spr_swap;
  for (int t = 0; t < store.ntrees && !interrupted(); ++t) {
    searching.current_tree = searching.swapping_index = t;
    record_of(t).waits = false;
    if (!swapping.mulpars && swapping.preproc != 0) swapping.preproc = 2;
    schgettree(slot_tree(t));
    const double score = swap(searching.anx, 0, capacity);
    t = searching.current_tree;
    if (!swapping.mulpars) keep_result(t, score);
    if (settings.status_trees > 0 && (t + 1) % settings.status_trees == 0) {
      report_status(score, true);
    }
    if (capacity > 0 && store.ntrees >= capacity && result.full_at < 0) result.full_at = t;
    if (score < result.best - score_rounding(*current_search_data)) {
      result.best = searching.best_score = score;
      searching.score_limit = score + search_settings.suboptimal;
      if (capacity > 0 && store.ntrees < capacity) result.full_at = -1;
      if (search_settings.suboptimal == 0 && swapping.mulpars) t = -1;
    }
    if (!interrupted()) done = t + 1;
    if (swapping.fill_only && store.ntrees >= store.maxtrees) break;
  }
  if (done < store.ntrees) {
    result.not_swapped = std::to_string(done);
    if (done + 1 < store.ntrees) result.not_swapped += "-" + std::to_string(store.ntrees - 1);
  }
  searching.swapping_index = -1;
  result.interrupted = interrupted();
  report_status(result.best, true);
  filter_by_score(result.best);
  result.equal_by_full_rule = drop_equal_by_full_rule();
  return result;
}

}  // namespace zeb
