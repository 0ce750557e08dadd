#include "search/combined/replicator.h"

#include <algorithm>

#include "base/interrupts.h"
#include "search/moves/swapper.h"
#include "search/moves/wagner.h"
#include "search/store/stored_trees.h"

namespace zeb {

replicator::replicator(search_context& context, const combined_settings& options,
                       const combined_stages& stages, const replication_watch& watch, int before)
    : context_(context),
      options_(options),
      stages_(stages),
      watch_(watch),
      seeds_(context.random, context.rules.seed_step),
      before_(before) {}

void replicator::follow(std::span<const std::int32_t> tree) {
  previous_.assign(tree.begin(), tree.end());
}

double replicator::note(double score) {
  watch_.found(score);
  return score;
}

void replicator::constrain_after(int step) {
  if (options_.autoconst != step || previous_.empty() || interrupted()) return;
  constraint_.emplace(context_, previous_, context_.working_tree);
}

void replicator::build() {
  context_.random.seed(static_cast<unsigned>(seeds_.current()));
  seeds_.advance();
  context_.shown.replication = before_ + ++made_;
  context_.shown.current_tree = context_.trees.ntrees;
  context_.shown.stage = stage_wagner;
  wagner_tree(context_, context_.working_tree, options_.addition);
}

/// Down from the tree as built; under the constraint, and then without.
double replicator::swap_first() {
  const std::span<std::int32_t> tree = context_.working_tree;
  constrain_after(1);
  const bool is_quick_start = !context_.rules.swap.mulpars && !context_.data.implied_on;
  double score = unknown_score;
  if (is_quick_start || options_.autoconst == 2) {
    context_.shown.stage = stage_spr;
    score = spr_swap(context_, tree, {});
  }
  constrain_after(2);
  context_.shown.stage = stage_tbr;
  if (!interrupted()) score = tbr_swap(context_, tree, {.multi = is_quick_start ? -1 : 0});
  constrain_after(3);
  return note(score);
}

double replicator::search_sectors_of(sector_settings::selection_kind selection, double score) {
  if (watch_.is_over()) return score;
  sector_settings how = stages_.sectors;
  how.selection = selection;
  how.findscore = options_.giveupscore;
  return note(search_sectors(context_, context_.working_tree, how));
}

double replicator::rebuild(double score) {
  if (options_.rebuild <= 0 || watch_.is_over()) return score;
  rebuild_settings how = stages_.rebuild;
  how.cycles = options_.rebuild;
  how.findscore = options_.giveupscore;
  return note(rebuild_search(context_, context_.working_tree, how, {}).best);
}

template <class settings, class search>
double replicator::run_cycles_of(settings how, int cycles, const search& run, double score) {
  if (cycles <= 0 || watch_.is_over()) return score;
  how.cycles.iterations = cycles;
  how.cycles.findscore = options_.giveupscore;
  cycle_task task{.fuse = stages_.fuse};
  if (options_.hold > 1) task.first_slot = first_slot_;
  return note(run(context_, context_.working_tree, how, task).best);
}

double replicator::improve_and_store(double score) {
  first_slot_ = context_.trees.ntrees;
  context_.tree_limit = static_cast<int>(std::min<std::int64_t>(
      context_.trees.maxtrees, std::int64_t{first_slot_} + std::max(options_.hold, 1)));
  if (options_.rss) score = search_sectors_of(sector_settings::random, score);
  if (options_.xss) score = search_sectors_of(sector_settings::exclusive, score);
  score = rebuild(score);
  // With slots, cycles leave the tree where they ended, which may be worse.
  if (options_.hold > 1 && !watch_.is_over())
    store_tree(context_, context_.working_tree, first_slot_, score);
  score = run_cycles_of(stages_.ratchet, options_.ratchet, ratchet_search, score);
  score = run_cycles_of(stages_.drift, options_.drift, drift_search, score);
  // Also a tree that was stopped on its way is kept.
  if (context_.trees.ntrees < context_.tree_limit)
    store_tree(context_, context_.working_tree, context_.trees.ntrees);
  context_.tree_limit = context_.trees.maxtrees;
  return std::min(score, best_stored(context_, first_slot_));
}

double replicator::make_next() {
  build();
  if (interrupted()) return unknown_score;
  double score = swap_first();
  if (options_.css && context_.constraints_in_force)
    score = search_sectors_of(sector_settings::constrained, score);
  if (constraint_) {
    constraint_.reset();
    context_.shown.stage = stage_tbr;
    if (!watch_.is_over()) score = note(tbr_swap(context_, context_.working_tree, {}));
  }
  score = improve_and_store(score);
  follow(context_.working_tree);
  return score;
}

}  // namespace zeb
