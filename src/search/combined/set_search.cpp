#include "search/combined/set_search.h"

#include <algorithm>
#include <string>
#include <utility>

#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/settings.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"

namespace zeb {

set_search::set_search(search_context& outer, combined_settings& options, combined_stages& stages)
    : outer_(outer),
      options_(options),
      stages_(stages),
      start_(wall_clock()),
      slots_(outer.trees.maxtrees, outer.trees.nnodes),
      scope_(outer, slots_),
      context_(scope_.context()),
      watch_{[this](double score) { take_best(score); }, [this] { return is_over(); }},
      pool_(context_, options, stages, watch_) {}

bool set_search::is_over() const {
  return interrupted() || outcome_.gave_up || outcome_.buffer_full;
}

void set_search::take_best(double score) {
  double& best = outcome_.end.score;
  outcome_.gave_up |=
      options_.giveupscore > 0 && is_within_bound(score, options_.giveupscore, kind());
  if (!is_better_score(score, best, kind())) return;
  best = score;
  outcome_.time_of_best = wall_clock();
  outcome_.best_replication = makes_->made();
  if (context_.best_score < 0 || is_better_score(score, context_.best_score, kind())) {
    context_.best_score = score;
    context_.shown.last_gain = outcome_.time_of_best;
  }
  note_score(context_, score);
}

void set_search::replicate_some(int count) {
  for (int i = 0; i < count && !is_over(); ++i) {
    if (free_slots() <= 0) drop_worse_trees();
    if (free_slots() <= 0) {
      outcome_.buffer_full = true;
      break;
    }
    const double score = makes_->make_next();
    if (score >= unknown_score) break;
    // At once, each with those before: on 400 to 500 taxa a third of the time to the best score.
    if (options_.fuse > 0 && options_.picktype <= 0) pool_.fuse(target_or_none(), 1);
    report_status(context_, score,
                  settings.status_trees > 0 && makes_->made() % settings.status_trees == 0);
  }
}

/// Hybrids need more trees to begin with.
void set_search::choose_crossing() {
  hybridizes_ = options_.hybrid;
  fuses_ = options_.fuse > 0;
  if (is_over()) return;
  if (options_.picktype > 0 && context_.trees.ntrees - pool_.first() > 1) {
    hybridizes_ = pool_.prefers_hybrids();
    fuses_ = !hybridizes_;
  }
  const int count = static_cast<int>(options_.replications * options_.hybrid_factor);
  const int more = count - options_.replications;
  if (!hybridizes_ || more <= 0) return;
  if (!context_.shown.silent) {
    emit(text_of("  Will complete %i builds to input to hybridization (%i more needed) \n", count,
                 more));
  }
  replicate_some(more);
}

/// False: the trees of the set were crossed and fused, and stay above the target.
bool set_search::cross_until_reached() {
  const int before = context_.trees.ntrees;
  const double best_before = outcome_.end.score;
  if (hybridizes_) pool_.hybridize(target_or_none());
  if (fuses_ && !(hybridizes_ && is_reached())) pool_.fuse(target_or_none(), options_.fuse);
  if (!has_target() || is_reached() || is_over()) return true;
  if (options_.dumpfuse && !is_better_score(outcome_.end.score, best_before, kind()))
    pool_.keep_first(before);
  return false;
}

/// Sectors and cycles once more on the best tree of the set; it comes beside the others.
void set_search::retouch() {
  if (free_slots() <= 0 || pool_.first() >= context_.trees.ntrees) return;
  const int best = pool_.best_slot();
  fetch_tree(context_, slot_tree(context_, best));
  makes_->improve_and_store(record_of(context_, best).score);
}

void set_search::go_on_from_failure(int failures) {
  constexpr int often = 2;  // fewer failures happen to every search
  if (failures > often && ++failures_ % std::max(1, options_.chklevel) == 0 &&
      options_.chklevel > 0)
    adjust(3, 1, false);
  if (failures <= options_.retouch) return retouch();
  if (!options_.xmix) makes_->follow({});
  replicate_some(hybridizes_ ? options_.replications : std::max(1, options_.replications / 2));
}

/// With a target that the user gave this goes on until it is reached, or the search is stopped.
void set_search::search_all() {
  replicate_some(options_.replications);
  choose_crossing();
  if (!hybridizes_ && !fuses_) return;
  for (int failures = 1; !cross_until_reached(); ++failures) go_on_from_failure(failures);
  if (options_.multiply && options_.fuse > 0 && !is_over()) pool_.multiply();
}

void set_search::adjust(int failures, int period, bool also_replications) {
  const double before = options_.level;
  const effort_change change = adjust_effort(options_, stages_.sectors, failures, period,
                                             also_replications, context_.data.n);
  if (change == effort_change::same || !(options_.verbose && !context_.shown.silent)) return;
  const std::string level =
      options_.level != before ? text_of("(%.2f) ", options_.level) : std::string();
  emit(text_of("\n\n   %screasing search level %s   %s\n",
               change == effort_change::more ? "In" : "De", level.c_str(),
               time_text(wall_clock() - start_).c_str()));
}

void set_search::drop_worse_trees() {
  const double best = outcome_.end.score;
  if (!options_.keepall && best < unknown_score) purge_above(context_, best, 0);
}

int set_search::take_failures() { return std::exchange(failures_, 0); }

/// What the report shows goes on from the outer search.
void set_search::begin(const set_task& task) {
  forget_trees(context_);
  outcome_ = {};
  target_ = task.target;
  context_.rules = outer_.rules;
  context_.shown = outer_.shown;
  context_.best_score = outer_.best_score;
  context_.rearrangements = rearrangements_before_ = outer_.rearrangements;
  moves_before_ = context_.moves_done;
  context_.tree_limit = context_.trees.maxtrees;
  context_.score_limit = no_bound;
  context_.random.seed(static_cast<unsigned>(task.seed));
  makes_.emplace(context_, options_, stages_, watch_, task.replications_before);
  makes_->follow(task.previous);
}

set_outcome set_search::finish() {
  outcome_.made = makes_->made();
  outcome_.end.stage = context_.shown.stage;
  outcome_.end.done = {context_.rearrangements.since(rearrangements_before_),
                       context_.moves_done - moves_before_};
  outcome_.trees = found_trees(context_);
  return std::move(outcome_);
}

set_outcome set_search::search(const set_task& task) {
  begin(task);
  search_all();
  return finish();
}

void put(const set_outcome& outcome, packet_writer& to) {
  put(outcome.end, to);
  to.put_byte(outcome.gave_up ? 1 : 0);
  to.put_byte(outcome.buffer_full ? 1 : 0);
  to.put(outcome.made);
  to.put(outcome.best_replication);
  to.put_real(outcome.time_of_best);
  put(outcome.trees, to);
}

set_outcome set_in(std::span<const std::byte> bytes) {
  packet_reader from(bytes);
  set_outcome outcome;
  outcome.end = state_from(from);
  outcome.gave_up = from.byte() != 0;
  outcome.buffer_full = from.byte() != 0;
  outcome.made = from.whole();
  outcome.best_replication = from.whole();
  outcome.time_of_best = from.real();
  outcome.trees = trees_from(from);
  return outcome;
}

}  // namespace zeb
