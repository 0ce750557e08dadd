#include "search/drivers/mult.h"

#include <algorithm>

#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "engine/passes/passes.h"
#include "search/drivers/seed_sequence.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"
#include "trees/tree_slots.h"

namespace zeb {

mult_settings mult;

namespace {

/// One run of `mult`.
class replicated_search {
 public:
  replicated_search(search_context& context, const mult_settings& options,
                    const mult_stages& stages)
      : context_(context), how_(context.rules.swap), options_(options), stages_(stages) {}
  mult_result run();

 private:
  void replicate(int seed, int next_seed);
  void swap_first();
  void swap_stored();
  void swap_single();
  void ratchet_and_drift(int seed);
  void count_hit();
  void drop_worse_trees();
  bool has_stages() const { return options_.ratchet || options_.drift; }
  swapper selected() const { return options_.swapper == mult_settings::spr ? spr_swap : tbr_swap; }
  int swap_stage() const { return options_.swapper == mult_settings::spr ? stage_spr : stage_tbr; }
  score_kind kind() const { return kind_of_scores(context_.data); }

  search_context& context_;
  const swap_settings& how_;
  const mult_settings& options_;
  const mult_stages& stages_;
  mult_result result_;
  int first_slot_ = 0;
  double score_ = unknown_score;
};

/// SPR before anything is stored: a cheap way down for replications that keep several trees.
void replicated_search::swap_first() {
  const bool spr_single = options_.swapper == mult_settings::spr && options_.hold < 2;
  const bool tbr_single = options_.swapper == mult_settings::tbr && options_.hold < 2;
  const bool wanted =
      options_.hold > 1 || !how_.mulpars || spr_single || (tbr_single && !how_.skip_spr);
  // Under implied weights most trees of a replication differ in score, and the way down is short.
  if (options_.swapper == mult_settings::wagner_only ||
      !(wanted && (!context_.data.implied_on || spr_single)))
    return;
  context_.shown.stage = stage_spr;
  score_ = spr_swap(context_, context_.working_tree, {});
}

/// The trees of this replication, each in turn; an improvement begins again with the first.
void replicated_search::swap_stored() {
  int& current = context_.shown.current_tree;
  context_.score_limit = score_ + context_.rules.suboptimal;
  for (int i = first_slot_; i < context_.trees.ntrees && !interrupted(); ++i) {
    current = context_.swapping_index = i;
    fetch_tree(context_, slot_tree(context_, i));
    const double found = selected()(context_, context_.working_tree,
                                    {.first_slot = first_slot_, .multi = context_.tree_limit});
    if (is_better_score(found, score_, kind())) {
      score_ = found;
      context_.score_limit = found + context_.rules.suboptimal;
      context_.swapping_index = -1;
      purge_above(context_, context_.score_limit, first_slot_);
      i = first_slot_ - 1;
      current = first_slot_;
    } else if (was_left(context_, i, found, context_.tree_limit)) {
      fetch_tree(context_, slot_tree(context_, i));
      selected()(context_, context_.working_tree,
                 {.first_slot = first_slot_, .multi = context_.tree_limit, .stay = true});
    }
    if (settings.status_trees > 0 && (i - first_slot_ + 1) % settings.status_trees == 0) {
      report_status(context_, score_, true);
    }
  }
  context_.swapping_index = -1;
  // An interrupt may come before a better tree that was stored has its turn.
  score_ = std::min(score_, best_stored(context_, first_slot_));
  // Trees that another replication had stored already aren't here: then the score is theirs.
}

void replicated_search::swap_single() {
  context_.shown.current_tree = context_.trees.ntrees;
  const bool quick_start = !how_.mulpars && !context_.data.implied_on;
  score_ = tbr_swap(context_, context_.working_tree,
                    {.first_slot = first_slot_,
                     .multi = quick_start ? -1 : 0,
                     .promising_first = how_.promising_first});
  if (interrupted() && context_.trees.ntrees > first_slot_) return;
  store_tree(context_, context_.working_tree, context_.trees.ntrees, score_);
}

/// Both stages start from where the one before ended.
void replicated_search::ratchet_and_drift(int seed) {
  context_.shown.stage = stage_tbr;
  const std::span<std::int32_t> tree = context_.working_tree;
  score_ = tbr_swap(context_, tree, {});
  store_tree(context_, tree, first_slot_, score_);
  const cycle_task task{.first_slot = first_slot_, .fuse = stages_.fuse};
  if (options_.ratchet && !interrupted()) {
    context_.random.seed(static_cast<unsigned>(seed));
    score_ = std::min(score_, ratchet_search(context_, tree, stages_.ratchet, task).best);
  }
  if (options_.drift && !interrupted()) {
    context_.random.seed(static_cast<unsigned>(seed));
    score_ = std::min(score_, drift_search(context_, tree, stages_.drift, task).best);
  }
}

void replicated_search::replicate(int seed, int next_seed) {
  tree_slots& trees = context_.trees;
  score_ = unknown_score;
  first_slot_ = trees.ntrees;
  context_.tree_limit = static_cast<int>(std::min<std::int64_t>(
      trees.maxtrees, static_cast<std::int64_t>(first_slot_) + std::max(options_.hold, 1)));
  context_.score_limit = no_bound;
  context_.shown.stage = stage_wagner;
  context_.shown.current_tree = first_slot_;
  context_.random.seed(static_cast<unsigned>(seed));
  const std::span<std::int32_t> built = slot_tree(context_, first_slot_);
  wagner_tree(context_, built, options_.addition);
  if (interrupted()) return;
  fetch_tree(context_, built);
  const std::span<std::int32_t> tree = context_.working_tree;
  swap_first();
  if (score_ >= unknown_score) score_ = tree_length(context_.data, tree);
  if (has_stages()) {
    ratchet_and_drift(next_seed);
    return;
  }
  if (!swaps(options_)) {
    report_status(context_, score_, false);
    store_tree(context_, tree, first_slot_, score_);
    return;
  }
  const bool single_tbr = options_.hold < 2 && options_.swapper == mult_settings::tbr;
  const bool is_new = single_tbr ? tree_is_new(context_, tree, first_slot_, score_)
                                 : store_tree(context_, tree, first_slot_, score_);
  if (!is_new) return;  // swapping would retrace known ground
  context_.shown.stage = swap_stage();
  if (options_.hold > 1) {
    swap_stored();
  } else if (single_tbr) {
    swap_single();
  }
}

void replicated_search::count_hit() {
  const bool overflowed = context_.tree_limit == context_.trees.ntrees;
  if (is_same_score(score_, result_.best, kind())) {
    ++result_.hits;
    result_.overflowed |= overflowed;
  } else if (score_ < result_.best) {
    result_.hits = 1;
    result_.overflowed = overflowed;
    result_.best = score_;
    context_.best_score = score_;
    note_score(context_, score_);
  }
}

/// A full buffer of trees that the end would drop doesn't stop the search.
void replicated_search::drop_worse_trees() {
  if (options_.keepall || result_.best >= unknown_score) return;
  purge_above(context_, result_.best + context_.rules.suboptimal, 0);
}

mult_result replicated_search::run() {
  int& replication = context_.shown.replication;
  // Trees that were in memory before may be better than all that replications find.
  result_.best = best_stored(context_, 0);
  seed_sequence seeds(context_.random, context_.rules.seed_step);
  context_.shown.stage = stage_wagner;
  context_.shown.current_tree = 0;
  replication = 0;
  begin_reports(context_);
  if (result_.best < unknown_score) context_.best_score = result_.best;
  report_status(context_, no_score, false);
  for (replication = 1; replication <= options_.replications; ++replication) {
    if (context_.trees.ntrees >= context_.trees.maxtrees) drop_worse_trees();
    if (context_.trees.ntrees >= context_.trees.maxtrees) {
      --replication;
      report_status(context_, no_score, true);
      if (!context_.shown.silent) {
        emit(text_of("\nNOTE: Search terminated after replication %i (tree buffer full)\n",
                     replication));
      }
      result_.buffer_full = true;
      break;
    }
    const int seed = seeds.current();
    context_.random.seed(static_cast<unsigned>(seed));
    seeds.advance();
    replicate(seed, seeds.current());
    context_.shown.current_tree = context_.trees.ntrees;
    if (score_ < unknown_score) {
      ++result_.replications_done;
      count_hit();
    }
    if (interrupted()) break;
    if (settings.status_replications > 0 && replication % settings.status_replications == 0) {
      report_status(context_, score_, true);
    }
  }
  context_.tree_limit = context_.trees.maxtrees;
  if (!interrupted() && !result_.buffer_full) --replication;
  if (!result_.buffer_full) {
    report_status(context_, score_ < unknown_score ? score_ : no_score, true);
  }
  if (result_.replications_done == 0) result_.best = unknown_score;
  return result_;
}

}  // namespace

mult_result mult_search(search_context& context, const mult_settings& options,
                        const mult_stages& stages) {
  return replicated_search(context, options, stages).run();
}

}  // namespace zeb
