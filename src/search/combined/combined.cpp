#include "search/combined/combined.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/settings.h"
#include "search/combined/consensus_watch.h"
#include "search/combined/effort.h"
#include "search/combined/set_pool.h"
#include "search/combined/set_search.h"
#include "search/part_search.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"
#include "search/workers/worker_pool.h"

namespace zeb {
namespace {

class combined_run {
 public:
  combined_run(search_context& context, combined_settings& options, combined_stages& stages)
      : context_(context),
        options_(options),
        stages_(stages),
        start_(wall_clock()),
        first_seed_(static_cast<unsigned>(context.random.draw())),
        watch_{[this](double score) {
                 set_best_ = std::min(set_best_, score);
                 take_best(score, result_.replications, wall_clock());
               },
               [this] { return interrupted() || gave_up_ || result_.buffer_full; }},
        pool_(context, options, stages, watch_),
        consensus_(context, options) {}
  combined_result run();

 private:
  void begin();
  set_outcome made_here(int set);
  void divide_sets(int first);
  std::optional<set_outcome> set_of_worker(int set);
  void next_set();
  void take_effort(const set_outcome& found);
  void take(const set_outcome& found);
  void take_rest(int first);
  bool store_found(const found_tree& tree);
  std::vector<const found_tree*> in_order_to_store(const std::vector<found_tree>& found) const;
  void end_set();
  void count_hit();
  void cross_all();
  void adjust_after_hit();
  void tell_hit() const;
  void tell_consensus() const;
  void drop_worse_trees();
  void take_best(double score, int replication, double time);
  void take_target(double score);
  int sets_to_come() const;

  bool has_target() const { return target_ < unknown_score; }
  /// Has the set a score to hit, or to give up at?
  bool is_reached() const { return is_within_bound(set_best_, target_, kind()) || gave_up_; }
  bool is_enough() const {
    return result_.hits >= options_.hits && consensus_.stable() >= options_.consense;
  }
  bool is_over() const { return is_enough() || interrupted() || result_.buffer_full; }
  bool speaks() const { return options_.verbose && !context_.shown.silent; }
  score_kind kind() const { return kind_of_scores(context_.data); }

  search_context& context_;
  combined_settings& options_;
  combined_stages& stages_;
  const double start_;
  const unsigned first_seed_;
  combined_result result_;
  const pool_watch watch_;
  std::optional<set_search> sets_;
  std::unique_ptr<worker_pool> workers_;  // for `divided_` sets from `first_divided_` on
  int first_divided_ = 0;
  int divided_ = 0;
  std::vector<std::int32_t> previous_;  // the tree before the first replication; empty: none
  set_pool pool_;                       // of the trees of all sets
  consensus_watch consensus_;
  int first_slot_ = 0;  // of the last set
  double target_ = unknown_score;
  double set_best_ = unknown_score;
  bool gave_up_ = false;      // the set has a score to give up at
  int hits_since_check_ = 0;  // of the effort
  int failures_ = 0;          // of the sets since then
};

void combined_run::take_target(double score) {
  target_ = score;
  result_.hits = 0;
}

void combined_run::count_hit() {
  ++result_.sets;
  if (set_best_ >= unknown_score) return;
  const bool is_better = options_.update && is_better_score(set_best_, target_, kind());
  if (!has_target() || (is_better && options_.giveupscore <= 0)) take_target(set_best_);
  if (is_reached()) ++result_.hits;
}

void combined_run::take_best(double score, int replication, double time) {
  if (!is_better_score(score, result_.best, kind())) return;
  result_.best = score;
  result_.seconds_to_best = time - start_;
  result_.best_replication = replication;
  context_.shown.last_gain = time;
  if (context_.best_score < 0 || is_better_score(score, context_.best_score, kind()))
    context_.best_score = score;
  note_score(context_, score);
}

/// The trees of all sets together.
void combined_run::cross_all() {
  const auto is_due = [this](int often) {
    return often > 0 && result_.hits > 0 && result_.hits % often == 0;
  };
  if (!is_due(options_.gfuse) && !is_due(options_.hfuse)) return;
  pool_.begin(0);
  if (is_due(options_.gfuse)) pool_.fuse(0, options_.fuse);
  if (is_due(options_.hfuse)) pool_.hybridize(0);
  consensus_.slots_changed();
  if (!options_.update || !is_better_score(set_best_, target_, kind())) return;
  take_target(set_best_);
  result_.hits = 1;
}

void combined_run::adjust_after_hit() {
  if (options_.chklevel <= 0 || ++hits_since_check_ < options_.chklevel) return;
  if (change_effort(context_, options_, stages_, {failures_, options_.chklevel, true}, start_))
    workers_.reset();
  hits_since_check_ = failures_ = 0;
}

void combined_run::tell_hit() const {
  if (!speaks()) return;
  emit(text_of("   Set %i: score %s; best score %s hit %i times\n", result_.sets,
               score_text(context_.data, set_best_).c_str(),
               score_text(context_.data, target_).c_str(), result_.hits));
}

void combined_run::tell_consensus() const {
  if (!speaks()) return;
  emit(text_of("   Calculated consensus (%i nodes) (%s)\n", consensus_.groups() + 1,
               time_text(wall_clock() - start_).c_str()));
  if (consensus_.stable() == 0) {
    emit("   Consensus not yet stabilized");
  } else {
    emit(text_of("   Consensus stabilized %i times", consensus_.stable()),
         consensus_.stable() < options_.consense ? " (current is not yet stable)" : "");
  }
  if (is_enough()) {
    emit("\n   No need to continue searching...\n");
  } else {
    emit(text_of("\n   Next consensus calculation: %i more hits\n", consensus_.hits_to_next()));
  }
}

/// Trees before those of the set may go, too.
void combined_run::drop_worse_trees() {
  if (options_.keepall || result_.best >= unknown_score) return;
  int first = 0;
  for (int t = 0; t < first_slot_; ++t)
    first += is_within_bound(record_of(context_, t).score, result_.best, kind());
  purge_above(context_, result_.best, 0);
  if (first == first_slot_) return;
  first_slot_ = first;
  consensus_.slots_changed();
}

void combined_run::end_set() {
  count_hit();
  tell_hit();
  if (options_.keepall && !options_.update && options_.hits > 1)
    purge_above(context_, set_best_, first_slot_);
  cross_all();
  drop_worse_trees();
  if (is_reached() && consensus_.note_hit(result_.best) && options_.consense > 0) tell_consensus();
  adjust_after_hit();
  if (settings.status_replications > 0 && result_.sets % settings.status_replications == 0)
    report_status(context_, set_best_, true);
}

/// True: there is room for the tree, or no need of it.
bool combined_run::store_found(const found_tree& tree) {
  if (context_.trees.ntrees >= context_.trees.maxtrees) drop_worse_trees();
  if (context_.trees.ntrees < context_.trees.maxtrees) {
    store_form(context_, tree.form, tree.score);
    return true;
  }
  return !options_.keepall && !is_within_bound(tree.score, result_.best, kind());
}

/// All in their order; the best first where all are to be kept but not all have room, so that the
/// trees in memory have the score that is told.
std::vector<const found_tree*> combined_run::in_order_to_store(
    const std::vector<found_tree>& found) const {
  std::vector<const found_tree*> order;
  for (const found_tree& tree : found) order.push_back(&tree);
  const auto room = static_cast<std::size_t>(context_.trees.maxtrees - context_.trees.ntrees);
  if (options_.keepall && room < found.size())
    std::ranges::stable_sort(order, {}, [](const found_tree* tree) { return tree->score; });
  return order;
}

/// Sets that workers have in hand don't know of it.
void combined_run::take_effort(const set_outcome& found) {
  failures_ += found.failures;
  for (int i = 0; i < found.more_effort; ++i)
    adjust_effort(options_, stages_.sectors, after_failures.failures, after_failures.period,
                  after_failures.also_replications, context_.data.n);
}

void combined_run::take(const set_outcome& found) {
  for (const status_mark& line : found.lines) record_status(context_, line);
  add_work(context_, found.end.done);
  take_effort(found);
  set_best_ = found.end.score;
  gave_up_ = found.gave_up;
  take_best(set_best_, result_.replications + found.best_replication, found.time_of_best);
  result_.replications += found.made;
  first_slot_ = context_.trees.ntrees;
  for (const found_tree* tree : in_order_to_store(found.trees))
    if (!store_found(*tree)) result_.buffer_full = true;
  result_.buffer_full |= found.buffer_full;
  context_.shown.stage = found.end.stage;
  context_.shown.replication = result_.replications;
  context_.shown.current_tree = context_.trees.ntrees;
}

/// Sets are independent.
set_outcome combined_run::made_here(int set) {
  set_task task;
  task.seed = std::max(1, random_generator(first_seed_ + static_cast<unsigned>(set)).draw());
  task.target = target_;
  task.replications_before = result_.replications;
  if (set == 0) task.previous = previous_;
  return sets_->search(task);
}

/// As far as can be told: more may be needed, and a set that finds better makes all that come after
/// it search for that.
int combined_run::sets_to_come() const {
  constexpr int unknown_number = 1'000'000;
  // Without a score to hit the first one finds it.
  if (!has_target() || part_search.sector) return 1;
  const int wanted = options_.consense > 0 ? unknown_number : options_.hits - result_.hits;
  // Lines of a set are recorded when it is taken, after all that it said.
  const bool says_more = options_.hybrid || options_.picktype > 0 || options_.chklevel > 0;
  if (settings.status_trees > 0 && says_more) return 1;
  // The effort changes by what came before.
  return options_.chklevel > 0 ? std::min(wanted, options_.chklevel - hits_since_check_) : wanted;
}

void combined_run::divide_sets(int first) {
  first_divided_ = first;
  divided_ = sets_to_come();
  workers_ = std::make_unique<worker_pool>(divided_, [this](int part, packet_writer& found) {
    put(made_here(first_divided_ + part), found);
  });
}

std::optional<set_outcome> combined_run::set_of_worker(int set) {
  const auto bytes =
      workers_->result_of(set - first_divided_, [this] { report_status_best(context_); });
  if (!bytes) return std::nullopt;
  return set_in(*bytes);
}

void combined_run::next_set() {
  const int set = result_.sets;
  if (!workers_ || set - first_divided_ >= divided_) divide_sets(set);
  std::optional<set_outcome> found = set_of_worker(set);
  if (!found && !interrupted()) found = made_here(set);
  if (found) take(*found);
  if (interrupted()) return take_rest(set + 1);
  const double target = target_;
  end_set();
  // What workers have in hand is of no use where another score is to be hit, or with more effort.
  if (target_ != target || found->more_effort > 0) workers_.reset();
}

/// What workers had in hand when they were stopped.
void combined_run::take_rest(int first) {
  for (int set = first; const std::optional<set_outcome> found = set_of_worker(set); ++set)
    take(*found);
}

void combined_run::begin() {
  if (options_.targetscore > 0) {
    target_ = options_.targetscore;
  } else if (options_.giveupscore > 0) {
    target_ = options_.giveupscore;
  }
  context_.rules.suboptimal = 0;
  if (options_.prvmix && context_.trees.ntrees > 0) {
    fetch_tree(context_, slot_tree(context_, context_.trees.ntrees - 1));
    previous_.assign(context_.working_tree.begin(), context_.working_tree.end());
  }
  sets_.emplace(context_, options_, stages_);
  context_.shown.stage = stage_wagner;
  context_.shown.replication = 0;
  context_.shown.hits_wanted = options_.hits;
  context_.shown.last_gain = start_;
  begin_reports(context_);
  report_status(context_, no_score, false);
}

combined_result combined_run::run() {
  begin();
  while (!is_over()) {
    context_.shown.hits = result_.hits;
    next_set();
  }
  workers_.reset();
  context_.shown.hits = result_.hits;
  drop_worse_trees();
  if (options_.consense > 0 && consensus_.tree().empty()) consensus_.look();
  result_.consensus = consensus_.tree();
  result_.consensus_groups = consensus_.groups();
  result_.hits_unchanged = consensus_.hits_unchanged();
  return result_;
}

}  // namespace

combined_result combined_search(search_context& context, combined_settings& options,
                                combined_stages& stages) {
  return combined_run(context, options, stages).run();
}

}  // namespace zeb
