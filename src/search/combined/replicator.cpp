#include "search/combined/replicator.h"

#include <algorithm>
#include <utility>

#include "base/interrupts.h"
#include "base/process.h"
#include "search/moves/swapper.h"
#include "search/moves/wagner.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"

namespace zeb {

replicator::replicator(search_context& outer, const combined_settings& options,
                       const combined_stages& stages)
    : options_(options),
      stages_(stages),
      slots_(std::clamp(options.hold, 1, std::max(1, outer.trees.maxtrees)), outer.trees.nnodes),
      scope_(outer, slots_),
      context_(scope_.context()) {}

bool replicator::is_over() const { return interrupted() || made_.gave_up; }

double replicator::note(double score) {
  const score_kind kind = kind_of_scores(context_.data);
  made_.gave_up |= options_.giveupscore > 0 && is_within_bound(score, options_.giveupscore, kind);
  if (!is_better_score(score, made_.end.score, kind)) return score;
  made_.end.score = score;
  made_.time_of_best = wall_clock();
  if (context_.best_score < 0 || is_better_score(score, context_.best_score, kind)) {
    context_.best_score = score;
    context_.shown.last_gain = made_.time_of_best;
  }
  note_score(context_, score);
  return score;
}

void replicator::begin(int seed) {
  begin_part(context_);
  made_ = {};
  context_.random.seed(static_cast<unsigned>(seed));
}

made_replication replicator::finish() {
  note(best_stored(context_, 0));
  made_.end.stage = context_.shown.stage;
  made_.end.done = work_of_part(context_);
  made_.last.assign(context_.working_tree.begin(), context_.working_tree.end());
  made_.trees = found_trees(context_);
  return std::move(made_);
}

void replicator::constrain_after(int step, std::span<const std::int32_t> follows) {
  if (options_.autoconst != step || follows.empty() || interrupted()) return;
  constraint_.emplace(context_, follows, context_.working_tree);
}

/// Down from the tree as built; under the constraint, and then without.
double replicator::swap_first(std::span<const std::int32_t> follows) {
  const std::span<std::int32_t> tree = context_.working_tree;
  constrain_after(1, follows);
  const bool is_quick_start = !context_.rules.swap.mulpars && !context_.data.implied_on;
  double score = unknown_score;
  if (is_quick_start || options_.autoconst == 2) {
    context_.shown.stage = stage_spr;
    score = spr_swap(context_, tree, {});
  }
  constrain_after(2, follows);
  context_.shown.stage = stage_tbr;
  if (!interrupted()) score = tbr_swap(context_, tree, {.multi = is_quick_start ? -1 : 0});
  constrain_after(3, follows);
  return note(score);
}

double replicator::search_sectors_of(sector_settings::selection_kind selection, double score) {
  if (is_over()) return score;
  sector_settings how = stages_.sectors;
  how.selection = selection;
  how.findscore = options_.giveupscore;
  return note(search_sectors(context_, context_.working_tree, how));
}

double replicator::rebuild(double score) {
  if (options_.rebuild <= 0 || is_over()) return score;
  rebuild_settings how = stages_.rebuild;
  how.cycles = options_.rebuild;
  how.findscore = options_.giveupscore;
  return note(rebuild_search(context_, context_.working_tree, how, {}).best);
}

template <class settings, class search>
double replicator::run_cycles_of(settings how, int cycles, const search& run, double score) {
  if (cycles <= 0 || is_over()) return score;
  how.cycles.iterations = cycles;
  how.cycles.findscore = options_.giveupscore;
  cycle_task task{.fuse = stages_.fuse};
  if (options_.hold > 1) task.first_slot = 0;
  return note(run(context_, context_.working_tree, how, task).best);
}

void replicator::improve_and_store(double score) {
  if (options_.rss) score = search_sectors_of(sector_settings::random, score);
  if (options_.xss) score = search_sectors_of(sector_settings::exclusive, score);
  score = rebuild(score);
  // With slots, cycles leave the tree where they ended, which may be worse.
  if (options_.hold > 1 && !is_over()) store_tree(context_, context_.working_tree, 0, score);
  score = run_cycles_of(stages_.ratchet, options_.ratchet, ratchet_search, score);
  run_cycles_of(stages_.drift, options_.drift, drift_search, score);
  // Also a tree that was stopped on its way is kept.
  if (context_.trees.ntrees < context_.tree_limit)
    store_tree(context_, context_.working_tree, context_.trees.ntrees);
}

made_replication replicator::make(int seed, std::span<const std::int32_t> follows) {
  begin(seed);
  context_.shown.stage = stage_wagner;
  wagner_tree(context_, context_.working_tree, options_.addition);
  if (interrupted()) return finish();
  double score = swap_first(follows);
  if (options_.css && context_.constraints_in_force)
    score = search_sectors_of(sector_settings::constrained, score);
  if (constraint_) {
    constraint_.reset();
    context_.shown.stage = stage_tbr;
    if (!is_over()) score = note(tbr_swap(context_, context_.working_tree, {}));
  }
  improve_and_store(score);
  return finish();
}

made_replication replicator::improve(int seed, std::span<const std::int32_t> tree, double score) {
  begin(seed);
  fetch_tree(context_, tree);
  note(score);
  improve_and_store(score);
  return finish();
}

void put(const made_replication& made, packet_writer& to) {
  put(made.end, to);
  to.put_byte(made.gave_up ? 1 : 0);
  to.put_real(made.time_of_best);
  to.put_list(made.last);
  put(made.trees, to);
}

made_replication replication_from(packet_reader& from) {
  made_replication made;
  made.end = state_from(from);
  made.gave_up = from.byte() != 0;
  made.time_of_best = from.real();
  made.last = from.list();
  made.trees = trees_from(from);
  return made;
}

}  // namespace zeb
