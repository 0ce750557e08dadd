#include "search/combined/combined.h"

#include <algorithm>
#include <string>
#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/settings.h"
#include "search/combined/consensus_watch.h"
#include "search/combined/replicator.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"

namespace zeb {
namespace {

class combined_run {
 public:
  combined_run(search_context& context, combined_settings& options, combined_stages& stages)
      : context_(context),
        options_(options),
        stages_(stages),
        start_(wall_clock()),
        makes_(context, options, stages,
               {[this](double score) { take_best(score); }, [this] { return is_over(); }}),
        watch_(context, options) {}
  combined_result run();

 private:
  /// Trees of one hit; returns their best score.
  double search_set();
  double replicate_some(int count);
  double go_on_from_failure(int failures, double score);
  double retouch();
  double fuse_from(int first, double target, fuse_settings how);
  void fuse_all();
  void count_hit(double score);
  void adjust_after_hit();
  void adjust(int failures, int period, bool also_replications);
  void tell_hit(double score) const;
  void tell_consensus() const;
  void begin();
  void end_set(double score);
  void drop_worse_trees();
  void keep_first_trees(int count);
  bool is_mixed();
  double multiply();
  void take_best(double score);
  void take_target(double score);

  bool has_target() const { return target_ < unknown_score; }
  bool is_reached(double score) const {
    return is_within_bound(score, target_, kind()) || is_given_up(score);
  }
  bool is_given_up(double score) const {
    return options_.giveupscore > 0 && is_within_bound(score, options_.giveupscore, kind());
  }
  bool is_over() const { return interrupted() || gave_up_ || result_.buffer_full; }
  bool is_enough() const {
    return result_.hits >= options_.hits && watch_.stable() >= options_.consense;
  }
  bool speaks() const { return options_.verbose && !context_.shown.silent; }
  int free_slots() const { return context_.trees.maxtrees - context_.trees.ntrees; }
  score_kind kind() const { return kind_of_scores(context_.data); }

  search_context& context_;
  combined_settings& options_;
  combined_stages& stages_;
  const double start_;
  combined_result result_;
  replicator makes_;
  consensus_watch watch_;
  double target_ = unknown_score;
  int first_of_set_ = 0;      // slot
  bool gave_up_ = false;      // the set has a score to give up at
  int hits_since_check_ = 0;  // of the effort
  int failures_ = 0;          // since then: fusing that didn't reach the target
};

void combined_run::take_best(double score) {
  gave_up_ |= is_given_up(score);
  if (!is_better_score(score, result_.best, kind())) return;
  result_.best = score;
  result_.seconds_to_best = wall_clock() - start_;
  result_.best_replication = makes_.made();
  context_.shown.last_gain = wall_clock();
  if (context_.best_score < 0 || is_better_score(score, context_.best_score, kind()))
    context_.best_score = score;
  note_score(context_, score);
}

double combined_run::replicate_some(int count) {
  double best = unknown_score;
  for (int i = 0; i < count && !is_over(); ++i) {
    if (free_slots() <= 0) drop_worse_trees();
    if (free_slots() <= 0) {
      result_.buffer_full = true;
      break;
    }
    const double score = makes_.make_next();
    best = std::min(best, score);
    if (score >= unknown_score) break;
    report_status(context_, score,
                  settings.status_trees > 0 && makes_.made() % settings.status_trees == 0);
  }
  return best;
}

/// Fuses the trees from slot `first` on; returns the best score of all of them.
double combined_run::fuse_from(int first, double target, fuse_settings how) {
  how.rounds = std::min(options_.fuse, free_slots());
  fuse_task task;
  for (int t = first; t < context_.trees.ntrees; ++t) task.slots.push_back(t);
  task.target_score = options_.giveupscore > 0 ? options_.giveupscore : target;
  task.reseeds = task.shows_rounds = false;
  if (task.slots.size() < 2 || how.rounds <= 0 || is_over()) return best_stored(context_, first);
  const double score = fuse_trees(context_, how, task).best;
  take_best(score);
  return std::min(score, best_stored(context_, first));
}

/// Sectors and cycles once more on the best tree of the set; it comes beside the others.
double combined_run::retouch() {
  int best = first_of_set_;
  for (int t = best; t < context_.trees.ntrees; ++t)
    if (record_of(context_, t).score < record_of(context_, best).score) best = t;
  if (free_slots() <= 0) return record_of(context_, best).score;
  fetch_tree(context_, slot_tree(context_, best));
  return makes_.improve_and_store(record_of(context_, best).score);
}

/// The trees of the set were fused and stay above the target.
double combined_run::go_on_from_failure(int failures, double score) {
  constexpr int often = 2;  // fewer failures happen to every search
  if (failures > often && ++failures_ % std::max(1, options_.chklevel) == 0 &&
      options_.chklevel > 0)
    adjust(3, 1, false);
  if (failures <= options_.retouch) return std::min(score, retouch());
  if (!options_.xmix) makes_.follow({});
  return std::min(score, replicate_some(std::max(1, options_.replications / 2)));
}

/// With a target that the user gave this goes on until it is reached, or the search is stopped.
double combined_run::search_set() {
  first_of_set_ = context_.trees.ntrees;
  gave_up_ = false;
  double score = replicate_some(options_.replications);
  if (options_.fuse <= 0) return score;
  for (int failures = 0;; ++failures) {
    if (failures > 0) score = go_on_from_failure(failures, score);
    const int before = context_.trees.ntrees;
    const double best_before = result_.best;
    score = std::min(score, fuse_from(first_of_set_, has_target() ? target_ : 0, stages_.fuse));
    if (!has_target() || is_reached(score) || is_over()) break;
    if (options_.dumpfuse && !is_better_score(result_.best, best_before, kind()))
      keep_first_trees(before);
  }
  return options_.multiply ? std::min(score, multiply()) : score;
}

void combined_run::keep_first_trees(int count) {
  std::vector<std::uint8_t> keep(at(context_.trees.ntrees), 1);
  std::fill(keep.begin() + count, keep.end(), std::uint8_t{0});
  keep_trees(context_, keep);
}

bool combined_run::is_mixed() {
  const double best = best_stored(context_, first_of_set_);
  for (int t = first_of_set_; t < context_.trees.ntrees; ++t)
    if (!is_same_score(record_of(context_, t).score, best, kind())) return true;
  return false;
}

/// Trees that are as good come of others that take over what the best have better.
double combined_run::multiply() {
  if (is_over() || !is_mixed()) return unknown_score;
  fuse_settings how = stages_.fuse;
  how.beststart = false;
  how.equals = true;
  return fuse_from(first_of_set_, 0, how);
}

void combined_run::take_target(double score) {
  target_ = score;
  result_.hits = 0;
}

void combined_run::count_hit(double score) {
  ++result_.sets;
  if (score >= unknown_score) return;
  const bool is_better = options_.update && is_better_score(score, target_, kind());
  if (!has_target() || (is_better && options_.giveupscore <= 0)) take_target(score);
  if (is_reached(score)) ++result_.hits;
}

void combined_run::fuse_all() {
  const double score = fuse_from(0, 0, stages_.fuse);
  if (!options_.update || !is_better_score(score, target_, kind())) return;
  take_target(score);
  result_.hits = 1;
}

void combined_run::adjust(int failures, int period, bool also_replications) {
  const double before = options_.level;
  const effort_change change = adjust_effort(options_, stages_.sectors, failures, period,
                                             also_replications, context_.data.n);
  if (change == effort_change::same || !speaks()) return;
  const std::string level =
      options_.level != before ? text_of("(%.2f) ", options_.level) : std::string();
  emit(text_of("\n\n   %screasing search level %s   %s\n",
               change == effort_change::more ? "In" : "De", level.c_str(),
               time_text(wall_clock() - start_).c_str()));
}

void combined_run::adjust_after_hit() {
  if (options_.chklevel <= 0 || ++hits_since_check_ < options_.chklevel) return;
  adjust(failures_, options_.chklevel, true);
  failures_ = hits_since_check_ = 0;
}

void combined_run::tell_hit(double score) const {
  if (!speaks()) return;
  emit(text_of("   Set %i: score %s; best score %s hit %i times\n", result_.sets,
               score_text(context_.data, score).c_str(), score_text(context_.data, target_).c_str(),
               result_.hits));
}

void combined_run::tell_consensus() const {
  if (!speaks()) return;
  emit(text_of("   Calculated consensus (%i nodes) (%s)\n", watch_.groups() + 1,
               time_text(wall_clock() - start_).c_str()));
  if (watch_.stable() == 0) {
    emit("   Consensus not yet stabilized");
  } else {
    emit(text_of("   Consensus stabilized %i times", watch_.stable()),
         watch_.stable() < options_.consense ? " (current is not yet stable)" : "");
  }
  if (is_enough()) {
    emit("\n   No need to continue searching...\n");
  } else {
    emit(text_of("\n   Next consensus calculation: %i more hits\n", watch_.hits_to_next()));
  }
}

void combined_run::drop_worse_trees() {
  if (!options_.keepall && result_.best < unknown_score) purge_above(context_, result_.best, 0);
}

void combined_run::end_set(double score) {
  count_hit(score);
  tell_hit(score);
  if (options_.gfuse > 0 && result_.hits > 0 && result_.hits % options_.gfuse == 0) fuse_all();
  drop_worse_trees();
  if (options_.keepall && !options_.update && options_.hits > 1)
    purge_above(context_, score, first_of_set_);
  if (is_reached(score) && watch_.note_hit(result_.best) && options_.consense > 0) tell_consensus();
  adjust_after_hit();
  if (settings.status_replications > 0 && result_.sets % settings.status_replications == 0)
    report_status(context_, score, true);
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
    makes_.follow(context_.working_tree);
  }
  context_.shown.stage = stage_wagner;
  context_.shown.hits_wanted = options_.hits;
  context_.shown.last_gain = start_;
  begin_reports(context_);
  report_status(context_, no_score, false);
}

combined_result combined_run::run() {
  begin();
  while (!is_enough() && !interrupted() && !result_.buffer_full) {
    if (result_.sets > 0) makes_.follow({});  // sets are independent
    context_.shown.hits = result_.hits;
    const double score = search_set();
    if (interrupted()) break;
    end_set(score);
  }
  context_.shown.hits = result_.hits;
  drop_worse_trees();
  if (options_.consense > 0 && watch_.tree().empty()) watch_.look();
  result_.replications = makes_.made();
  result_.consensus = watch_.tree();
  result_.consensus_groups = watch_.groups();
  result_.hits_unchanged = watch_.hits_unchanged();
  return result_;
}

}  // namespace

combined_result combined_search(search_context& context, combined_settings& options,
                                combined_stages& stages) {
  return combined_run(context, options, stages).run();
}

}  // namespace zeb
