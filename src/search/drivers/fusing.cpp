#include "search/drivers/fusing.h"

#include <algorithm>

#include "base/indices.h"
#include "base/interrupts.h"
#include "engine/passes/passes.h"
#include "search/breaking_trees.h"
#include "search/moves/clade_exchange.h"
#include "search/moves/other_outgroup.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"
#include "search/store/tree_identity.h"

namespace zeb {

fuse_settings fusing;

namespace {

class fuser {
 public:
  fuser(search_context& context, const fuse_settings& options, const fuse_task& task)
      : context_(context),
        options_(options),
        task_(task),
        pool_(task.slots),
        tree_(context.working_tree),
        source_(at(context.data.nodes)) {}
  fuse_result run();

 private:
  void run_round();
  void fuse_with(int number);
  int exchange();
  void exchange_by_other_roots();
  void end_round(double score_before);
  void store();
  void take_best(double score);
  int other_target(int target);
  bool reached() const {
    return task_.target_score > 0 && is_within_bound(result_.best, task_.target_score, kind());
  }
  bool is_over() const { return interrupted() || reached(); }
  score_kind kind() const { return kind_of_scores(context_.data); }

  search_context& context_;
  const fuse_settings& options_;
  const fuse_task& task_;
  fuse_result result_;
  std::vector<int> pool_;  // slots
  std::span<std::int32_t> tree_;
  std::vector<std::int32_t> source_;
  int target_ = 0;  // place in the pool
  double score_ = unknown_score;
  bool changed_ = false;
};

void fuser::take_best(double score) {
  if (score >= breaking_handicap || !is_better_score(score, result_.best, kind())) return;
  result_.best = score;
  if (context_.best_score < 0 || is_better_score(score, context_.best_score, kind()))
    context_.best_score = score;
  note_score(context_, score);
}

int fuser::exchange() {
  const exchange_rules rules{options_.equals, options_.choose, options_.minfork};
  int all = 0;
  for (;;) {
    const double before = score_;
    const int taken = exchange_clades(context_, tree_, source_, rules, &score_);
    all += taken;
    // With exchanges that change nothing two trees could go on for ever.
    if (!options_.repeat || !is_better_score(score_, before, kind()) || is_over()) return all;
  }
}

/// Clades of other rootings are what these trees have outside of clades. Constraints know
/// terminals by their numbers.
void fuser::exchange_by_other_roots() {
  if (context_.constraints_in_force) return;
  for (int i = 0; i < options_.xroot && !is_over(); ++i) {
    const other_outgroup outgroup(context_.data, context_.random);
    outgroup.root_there(tree_);
    outgroup.root_there(source_);
    changed_ |= exchange() > 0;
    outgroup.root_back(tree_);
    outgroup.root_back(source_);
  }
}

void fuser::fuse_with(int number) {
  const std::span<const std::int32_t> stored = slot_tree(context_, pool_[at(number)]);
  std::ranges::transform(stored, source_.begin(), plain_ancestor);
  changed_ |= exchange() > 0;
  exchange_by_other_roots();
  take_best(score_);
  report_status(context_, score_ >= breaking_handicap ? score_ - breaking_handicap : score_, false);
}

void fuser::store() {
  const int limit = std::min(context_.tree_limit, context_.trees.maxtrees);
  const int slot = context_.trees.ntrees;
  if (slot >= limit) {
    result_.buffer_full = true;
  } else if (store_tree(context_, tree_, slot, score_)) {
    pool_.push_back(slot);
  }
}

void fuser::end_round(double score_before) {
  if (!changed_) return;
  const int slot = context_.trees.ntrees;
  if (slot >= std::min(context_.tree_limit, context_.trees.maxtrees)) {
    result_.buffer_full = true;
    return;
  }
  if (options_.swap && !interrupted() && tree_is_new(context_, tree_, slot, score_)) {
    score_ = tbr_swap(context_, tree_, {});
    take_best(score_);
  }
  if (options_.keepall || is_better_score(score_, score_before, kind())) store();
}

void fuser::run_round() {
  const int count = static_cast<int>(pool_.size());
  std::vector<int> order(at(count));
  random_sequence(context_.random, count, order, -1, {});
  fetch_tree(context_, slot_tree(context_, pool_[at(target_)]));
  score_ = tree_length(context_.data, tree_);
  if (record_of(context_, pool_[at(target_)]).score >= breaking_handicap)
    score_ += breaking_handicap;
  const double before = score_;
  changed_ = false;
  for (const int number : order) {
    if (number == target_) continue;
    context_.shown.current_tree = number;
    fuse_with(number);
    if (is_over()) break;
  }
  end_round(before);
}

int fuser::other_target(int target) {
  const int count = static_cast<int>(pool_.size());
  const int other = context_.random.draw() % (count - 1);
  return other + (other >= target ? 1 : 0);
}

fuse_result fuser::run() {
  const int count = static_cast<int>(pool_.size());
  int best = 0;
  for (int i = 0; i < count; ++i) {
    const double score = record_of(context_, pool_[at(i)]).score;
    take_best(score);
    if (score < record_of(context_, pool_[at(best)]).score) best = i;
  }
  if (task_.reseeds) seed_generator(context_.random);
  target_ = options_.beststart ? best : context_.random.draw() % count;
  context_.shown.stage = stage_fuse;
  while (result_.rounds < options_.rounds && !is_over() && !result_.buffer_full) {
    if (task_.shows_rounds) context_.shown.replication = result_.rounds + 1;
    context_.random.seed(static_cast<unsigned>(context_.random.draw()));
    run_round();
    if (!interrupted()) ++result_.rounds;
    target_ = other_target(target_);
  }
  return result_;
}

}  // namespace

fuse_result fuse_trees(search_context& context, const fuse_settings& options,
                       const fuse_task& task) {
  return fuser(context, options, task).run();
}

}  // namespace zeb
