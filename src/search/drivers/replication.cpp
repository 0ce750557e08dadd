#include "search/drivers/replication.h"

#include <algorithm>
#include <utility>

#include "base/interrupts.h"
#include "base/process.h"
#include "console/settings.h"
#include "engine/passes/passes.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"

namespace zeb {

replication_maker::replication_maker(search_context& outer, const mult_settings& options,
                                     const mult_stages& stages, known_test is_known)
    : options_(options),
      stages_(stages),
      is_known_(std::move(is_known)),
      slots_(std::clamp(options.hold, 1, std::max(1, outer.trees.maxtrees)), outer.trees.nnodes),
      scope_(outer, slots_),
      context_(scope_.context()),
      how_(context_.rules.swap) {}

void replication_maker::begin() {
  begin_part(context_);
  outcome_ = {};
  score_ = unknown_score;
  context_.shown.stage = stage_wagner;
}

/// True where the tree in work is known: all that comes would retrace known ground.
bool replication_maker::ends_here() {
  replication_step step{{context_.shown.stage, score_, work_of_part(context_)},
                        normal_form(context_, context_.working_tree, score_)};
  outcome_.ended_as_known = is_known_(step.form, score_);
  outcome_.steps.push_back(std::move(step));
  return outcome_.ended_as_known;
}

/// SPR before anything else: a cheap way down for replications that keep several trees.
void replication_maker::swap_first() {
  const bool spr_single = swaps_by_spr() && options_.hold < 2;
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

/// One tree goes down to its optimum.
void replication_maker::improve() {
  const bool has_spr = context_.shown.stage == stage_spr;
  if (swaps_by_spr() && has_spr) return;
  context_.shown.stage = swaps_by_spr() ? stage_spr : stage_tbr;
  score_ = (swaps_by_spr() ? spr_swap : tbr_swap)(context_, context_.working_tree,
                                                  {.promising_first = how_.promising_first});
}

/// A worker's lines are recorded by who takes the replication.
void replication_maker::record_line() {
  const status_mark mark = mark_of_part(context_, score_);
  if (process.slave)
    outcome_.lines.push_back(mark);
  else
    record_status(*context_.outer, mark);
}

/// The trees around the optimum, each in turn; an improvement begins again with the first.
void replication_maker::swap_around() {
  const swapper swap = swaps_by_spr() ? spr_swap : tbr_swap;
  int& current = context_.shown.current_tree;
  context_.score_limit = score_ + context_.rules.suboptimal;
  for (int i = 0; i < context_.trees.ntrees && !interrupted(); ++i) {
    const replication_step& last = outcome_.steps.back();
    if (is_known_(last.form, last.state.score)) {
      outcome_.ended_as_known = true;
      break;
    }
    current = context_.swapping_index = i;
    fetch_tree(context_, slot_tree(context_, i));
    const double found = swap(context_, context_.working_tree, {.multi = context_.tree_limit});
    if (is_better_score(found, score_, kind())) {
      score_ = found;
      context_.score_limit = found + context_.rules.suboptimal;
      context_.swapping_index = -1;
      purge_above(context_, context_.score_limit, 0);
      i = -1;
      current = 0;
    } else if (was_left(context_, i, found, context_.tree_limit)) {
      fetch_tree(context_, slot_tree(context_, i));
      swap(context_, context_.working_tree, {.multi = context_.tree_limit, .stay = true});
    }
    if (settings.status_trees > 0 && (i + 1) % settings.status_trees == 0) record_line();
  }
  context_.swapping_index = -1;
  // An interrupt may come before a better tree that was stored has its turn.
  score_ = std::min(score_, best_stored(context_, 0));
}

void replication_maker::swap_single() {
  score_ = tbr_swap(context_, context_.working_tree,
                    {.multi = is_quick_start() ? -1 : 0, .promising_first = how_.promising_first});
  store_tree(context_, context_.working_tree, 0, score_);
}

/// Both stages start from where the one before ended.
void replication_maker::ratchet_and_drift(int seed) {
  context_.shown.stage = stage_tbr;
  const std::span<std::int32_t> tree = context_.working_tree;
  score_ = tbr_swap(context_, tree, {});
  store_tree(context_, tree, 0, score_);
  const cycle_task task{.first_slot = 0, .fuse = stages_.fuse};
  if (options_.ratchet && !interrupted()) {
    context_.random.seed(static_cast<unsigned>(seed));
    score_ = std::min(score_, ratchet_search(context_, tree, stages_.ratchet, task).best);
  }
  if (options_.drift && !interrupted()) {
    context_.random.seed(static_cast<unsigned>(seed));
    score_ = std::min(score_, drift_search(context_, tree, stages_.drift, task).best);
  }
}

void replication_maker::search(int seed, int next_seed) {
  context_.random.seed(static_cast<unsigned>(seed));
  const std::span<std::int32_t> tree = context_.working_tree;
  wagner_tree(context_, tree, options_.addition);
  if (interrupted()) return;
  swap_first();
  if (score_ >= unknown_score) score_ = tree_length(context_.data, tree);
  if (options_.ratchet || options_.drift) return ratchet_and_drift(next_seed);
  if (!swaps(options_)) {
    report_status(context_, score_, false);
    store_tree(context_, tree, 0, score_);
    return;
  }
  if (ends_here()) return;
  if (options_.hold < 2 && !swaps_by_spr()) {
    context_.shown.stage = stage_tbr;
    return swap_single();
  }
  if (options_.hold > 1) {
    improve();
    if (!interrupted() && ends_here()) return;
  }
  store_tree(context_, tree, 0, score_);
  if (options_.hold > 1) swap_around();
}

void replication_maker::finish() {
  outcome_.end = {context_.shown.stage, score_, work_of_part(context_)};
  outcome_.full = context_.trees.ntrees >= context_.trees.maxtrees;
  if (!outcome_.ended_as_known) outcome_.trees = found_trees(context_);
}

replication_outcome replication_maker::make(int seed, int next_seed) {
  begin();
  search(seed, next_seed);
  finish();
  return std::move(outcome_);
}

void put(const replication_outcome& outcome, packet_writer& to) {
  to.put(static_cast<std::int32_t>(outcome.steps.size()));
  for (const replication_step& step : outcome.steps) {
    put(step.state, to);
    to.put_list(step.form);
  }
  put(outcome.end, to);
  to.put_byte(outcome.ended_as_known ? 1 : 0);
  to.put_byte(outcome.full ? 1 : 0);
  put(outcome.trees, to);
  put(outcome.lines, to);
}

replication_outcome replication_in(std::span<const std::byte> bytes) {
  packet_reader from(bytes);
  replication_outcome outcome;
  for (int steps = from.whole(); steps > 0; --steps) {
    const part_state state = state_from(from);
    outcome.steps.push_back({state, from.list()});
  }
  outcome.end = state_from(from);
  outcome.ended_as_known = from.byte() != 0;
  outcome.full = from.byte() != 0;
  outcome.trees = trees_from(from);
  outcome.lines = marks_from(from);
  return outcome;
}

}  // namespace zeb
