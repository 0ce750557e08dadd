#include "search/combined/set_search.h"

#include <algorithm>
#include <utility>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/settings.h"
#include "search/combined/effort.h"
#include "search/part_search.h"
#include "search/store/stored_trees.h"
#include "search/workers/worker_pool.h"

namespace zeb {
namespace {

/// Some replications that depend on nothing but each other: where there is a tree to begin with all
/// follow that one, each by itself; else each second one follows the one before it.
class replication_batch {
 public:
  replication_batch(replicator& makes, std::vector<int> seeds,
                    std::span<const std::int32_t> follows, bool in_pairs)
      : makes_(makes),
        seeds_(std::move(seeds)),
        follows_(follows.begin(), follows.end()),
        each_(in_pairs && follows.empty() ? 2 : 1) {}

  int parts() const { return (static_cast<int>(seeds_.size()) + each_ - 1) / each_; }
  /// `take` is given each replication of the part, and says whether more are wanted.
  template <class taker>
  void make(int part, const taker& take) const {
    std::vector<std::int32_t> follows = follows_;
    const int end = std::min((part + 1) * each_, static_cast<int>(seeds_.size()));
    for (int i = part * each_; i < end; ++i) {
      const made_replication made = makes_.make(seeds_[at(i)], follows);
      if (!take(made)) break;
      follows = made.last;
    }
  }

 private:
  replicator& makes_;
  const std::vector<int> seeds_;
  const std::vector<std::int32_t> follows_;
  const int each_;  // replications of a part
};

void put_part(const replication_batch& batch, int part, packet_writer& to) {
  batch.make(part, [&to](const made_replication& made) {
    to.put_byte(1);
    put(made, to);
    return !made.gave_up && !interrupted();
  });
  to.put_byte(0);
}

}  // namespace

set_search::set_search(search_context& outer, const combined_settings& options,
                       const combined_stages& stages)
    : outer_(outer),
      wanted_(options),
      wanted_stages_(stages),
      options_(options),
      stages_(stages),
      start_(wall_clock()),
      slots_(outer.trees.maxtrees, outer.trees.nnodes),
      scope_(outer, slots_),
      context_(scope_.context()),
      watch_{[this](double score) { take_best(score, wall_clock()); },
             [this] { return is_over(); }},
      makes_(context_, options_, stages_),
      pool_(context_, options_, stages_, watch_) {}

bool set_search::is_over() const {
  return interrupted() || outcome_.gave_up || outcome_.buffer_full;
}

void set_search::take_best(double score, double time) {
  double& best = outcome_.end.score;
  outcome_.gave_up |=
      options_.giveupscore > 0 && is_within_bound(score, options_.giveupscore, kind());
  if (!is_better_score(score, best, kind())) return;
  best = score;
  outcome_.time_of_best = time;
  outcome_.best_replication = outcome_.made;
  if (context_.best_score < 0 || is_better_score(score, context_.best_score, kind())) {
    context_.best_score = score;
    context_.shown.last_gain = time;
  }
  note_score(context_, score);
}

/// False: no more trees can be stored.
bool set_search::make_room() {
  if (free_slots() <= 0) drop_worse_trees();
  return free_slots() > 0;
}

void set_search::take(const made_replication& made) {
  add_work(context_, made.end.done);
  context_.shown.stage = made.end.stage;
  take_best(made.end.score, made.time_of_best);
  for (const found_tree& tree : made.trees)
    if (make_room()) store_form(context_, tree.form, tree.score);
}

/// A worker's lines are recorded by who takes the set.
void set_search::record_line(double score) {
  const status_mark mark = mark_of_part(context_, score);
  if (process.slave)
    outcome_.lines.push_back(mark);
  else
    record_status(outer_, mark);
}

void set_search::take_replication(const made_replication& made) {
  if (made.end.score < unknown_score) ++outcome_.made;
  context_.shown.replication = replications_before_ + outcome_.made;
  take(made);
  if (made.end.score >= unknown_score) return;
  last_ = made.last;
  // At once, each with those before: on 400 to 500 taxa a third of the time to the best score.
  if (options_.fuse > 0 && options_.picktype <= 0) pool_.fuse(target_or_none(), 1);
  report_status(context_, made.end.score, false);
  if (settings.status_trees > 0 && outcome_.made % settings.status_trees == 0)
    record_line(made.end.score);
}

std::vector<int> set_search::seeds_for(int replications) {
  std::vector<int> seeds;
  for (; static_cast<int>(seeds.size()) < replications; seeds_->advance()) {
    seeds.push_back(seeds_->current());
    context_.random.seed(static_cast<unsigned>(seeds.back()));
  }
  return seeds;
}

/// Takes what workers had in hand when they were stopped, too.
void set_search::replicate_some(int count, std::span<const std::int32_t> follows) {
  const replication_batch batch(makes_, seeds_for(count), follows, options_.autoconst > 0);
  const auto take_one = [this](const made_replication& made) {
    if (outcome_.gave_up || outcome_.buffer_full) return false;
    if (make_room())
      take_replication(made);
    else
      outcome_.buffer_full = true;
    return !is_over();
  };
  worker_pool workers(part_search.sector ? 1 : batch.parts(),
                      [&batch](int part, packet_writer& found) { put_part(batch, part, found); });
  for (int part = 0; part < batch.parts(); ++part) {
    if (is_over() && !(interrupted() && workers.has_workers())) break;
    const auto bytes = workers.result_of(part, [this] { report_status_best(context_); });
    if (bytes) {
      packet_reader from(*bytes);
      while (from.byte() != 0) take_one(replication_from(from));
    } else if (!interrupted()) {
      context_.shown.replication = replications_before_ + outcome_.made + 1;
      batch.make(part, take_one);
    }
  }
}

/// Hybrids need more trees to begin with.
void set_search::choose_crossing() {
  hybridizes_ = options_.hybrid;
  fuses_ = options_.fuse > 0;
  if (is_over()) return;
  if (options_.picktype > 0 && context_.trees.ntrees > 1) {
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
  replicate_some(more, {});
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
  if (free_slots() <= 0 || context_.trees.ntrees == 0) return;
  const int best = pool_.best_slot();
  const int seed = std::max(1, context_.random.draw());
  take(makes_.improve(seed, slot_tree(context_, best), record_of(context_, best).score));
}

void set_search::take_more_effort() {
  ++outcome_.more_effort;
  change_effort(context_, options_, stages_, after_failures, start_);
}

void set_search::go_on_from_failure(int failures) {
  constexpr int often = 2;  // fewer failures happen to every search
  if (failures > often && ++outcome_.failures % std::max(1, options_.chklevel) == 0 &&
      options_.chklevel > 0)
    take_more_effort();
  if (failures <= options_.retouch) return retouch();
  const std::vector<std::int32_t> none;
  replicate_some(hybridizes_ ? options_.replications : std::max(1, options_.replications / 2),
                 options_.xmix ? std::vector(last_) : none);
}

/// With a target that the user gave this goes on until it is reached, or the search is stopped.
void set_search::search_all(std::span<const std::int32_t> follows) {
  replicate_some(options_.replications, follows);
  choose_crossing();
  if (!hybridizes_ && !fuses_) return;
  for (int failures = 1; !cross_until_reached(); ++failures) go_on_from_failure(failures);
  if (options_.multiply && options_.fuse > 0 && !is_over()) pool_.multiply();
}

void set_search::drop_worse_trees() {
  const double best = outcome_.end.score;
  if (!options_.keepall && best < unknown_score) purge_above(context_, best, 0);
}

void set_search::begin(const set_task& task) {
  options_ = wanted_;
  stages_ = wanted_stages_;
  begin_part(context_);
  outcome_ = {};
  last_.clear();
  target_ = task.target;
  replications_before_ = task.replications_before;
  context_.random.seed(static_cast<unsigned>(task.seed));
  seeds_.emplace(context_.random, context_.rules.seed_step);
}

set_outcome set_search::finish() {
  outcome_.end.stage = context_.shown.stage;
  outcome_.end.done = work_of_part(context_);
  outcome_.trees = found_trees(context_);
  return std::move(outcome_);
}

set_outcome set_search::search(const set_task& task) {
  begin(task);
  search_all(task.previous);
  return finish();
}

void put(const set_outcome& outcome, packet_writer& to) {
  put(outcome.end, to);
  to.put_byte(outcome.gave_up ? 1 : 0);
  to.put_byte(outcome.buffer_full ? 1 : 0);
  for (const int number :
       {outcome.made, outcome.best_replication, outcome.failures, outcome.more_effort})
    to.put(number);
  to.put_real(outcome.time_of_best);
  put(outcome.trees, to);
  put(outcome.lines, to);
}

set_outcome set_in(std::span<const std::byte> bytes) {
  packet_reader from(bytes);
  set_outcome outcome;
  outcome.end = state_from(from);
  outcome.gave_up = from.byte() != 0;
  outcome.buffer_full = from.byte() != 0;
  for (int* number :
       {&outcome.made, &outcome.best_replication, &outcome.failures, &outcome.more_effort})
    *number = from.whole();
  outcome.time_of_best = from.real();
  outcome.trees = trees_from(from);
  outcome.lines = marks_from(from);
  return outcome;
}

}  // namespace zeb
