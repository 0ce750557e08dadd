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
#include "search/combined/set_pool.h"
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
        watch_{[this](double score) { take_best(score); }, [this] { return is_over(); }},
        makes_(context, options, stages, watch_),
        pool_(context, options, stages, watch_),
        consensus_(context, options) {}
  combined_result run();

 private:
  void begin();
  /// Makes the trees of one hit, if it is one.
  void search_set();
  void replicate_some(int count);
  void choose_crossing();
  bool cross_until_reached();
  void go_on_from_failure(int failures);
  void retouch();
  void end_set();
  void count_hit();
  void cross_all();
  void adjust_after_hit();
  void adjust(int failures, int period, bool also_replications);
  void tell_hit() const;
  void tell_consensus() const;
  void drop_worse_trees();
  void take_best(double score);
  void take_target(double score);

  bool has_target() const { return target_ < unknown_score; }
  double target_or_none() const { return has_target() ? target_ : 0; }
  /// Has the set a score to hit, or to give up at?
  bool is_reached() const { return is_within_bound(set_best_, target_, kind()) || gave_up_; }
  bool is_over() const { return interrupted() || gave_up_ || result_.buffer_full; }
  bool is_enough() const {
    return result_.hits >= options_.hits && consensus_.stable() >= options_.consense;
  }
  bool speaks() const { return options_.verbose && !context_.shown.silent; }
  int free_slots() const { return context_.trees.maxtrees - context_.trees.ntrees; }
  score_kind kind() const { return kind_of_scores(context_.data); }

  search_context& context_;
  combined_settings& options_;
  combined_stages& stages_;
  const double start_;
  combined_result result_;
  const replication_watch watch_;
  replicator makes_;
  set_pool pool_;
  consensus_watch consensus_;
  double target_ = unknown_score;
  double set_best_ = unknown_score;
  bool gave_up_ = false;      // the set has a score to give up at
  bool hybridizes_ = false;   // the set's trees are crossed
  bool fuses_ = false;        // ... and fused
  int hits_since_check_ = 0;  // of the effort
  int failures_ = 0;          // since then: crossings that didn't reach the target
};

void combined_run::take_best(double score) {
  set_best_ = std::min(set_best_, score);
  gave_up_ |= options_.giveupscore > 0 && is_within_bound(score, options_.giveupscore, kind());
  if (!is_better_score(score, result_.best, kind())) return;
  result_.best = score;
  result_.seconds_to_best = wall_clock() - start_;
  result_.best_replication = makes_.made();
  context_.shown.last_gain = wall_clock();
  if (context_.best_score < 0 || is_better_score(score, context_.best_score, kind()))
    context_.best_score = score;
  note_score(context_, score);
}

void combined_run::replicate_some(int count) {
  for (int i = 0; i < count && !is_over(); ++i) {
    if (free_slots() <= 0) drop_worse_trees();
    if (free_slots() <= 0) {
      result_.buffer_full = true;
      break;
    }
    const double score = makes_.make_next();
    if (score >= unknown_score) break;
    // At once, each with those before: on 400 to 500 taxa a third of the time to the best score.
    if (options_.fuse > 0 && options_.picktype <= 0) pool_.fuse(target_or_none(), 1);
    report_status(context_, score,
                  settings.status_trees > 0 && makes_.made() % settings.status_trees == 0);
  }
}

/// Hybrids need more trees to begin with.
void combined_run::choose_crossing() {
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
bool combined_run::cross_until_reached() {
  const int before = context_.trees.ntrees;
  const double best_before = result_.best;
  if (hybridizes_) pool_.hybridize(target_or_none());
  if (fuses_ && !(hybridizes_ && is_reached())) pool_.fuse(target_or_none(), options_.fuse);
  if (!has_target() || is_reached() || is_over()) return true;
  if (options_.dumpfuse && !is_better_score(result_.best, best_before, kind()))
    pool_.keep_first(before);
  return false;
}

/// Sectors and cycles once more on the best tree of the set; it comes beside the others.
void combined_run::retouch() {
  if (free_slots() <= 0 || pool_.first() >= context_.trees.ntrees) return;
  const int best = pool_.best_slot();
  fetch_tree(context_, slot_tree(context_, best));
  makes_.improve_and_store(record_of(context_, best).score);
}

void combined_run::go_on_from_failure(int failures) {
  constexpr int often = 2;  // fewer failures happen to every search
  if (failures > often && ++failures_ % std::max(1, options_.chklevel) == 0 &&
      options_.chklevel > 0)
    adjust(3, 1, false);
  if (failures <= options_.retouch) return retouch();
  if (!options_.xmix) makes_.follow({});
  replicate_some(hybridizes_ ? options_.replications : std::max(1, options_.replications / 2));
}

/// With a target that the user gave this goes on until it is reached, or the search is stopped.
void combined_run::search_set() {
  pool_.begin(context_.trees.ntrees);
  gave_up_ = false;
  set_best_ = unknown_score;
  replicate_some(options_.replications);
  choose_crossing();
  if (!hybridizes_ && !fuses_) return;
  for (int failures = 1; !cross_until_reached(); ++failures) go_on_from_failure(failures);
  if (options_.multiply && options_.fuse > 0 && !is_over()) pool_.multiply();
}

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
  for (int t = 0; t < pool_.first(); ++t)
    first += is_within_bound(record_of(context_, t).score, result_.best, kind());
  purge_above(context_, result_.best, 0);
  if (first == pool_.first()) return;
  pool_.begin(first);
  consensus_.slots_changed();
}

void combined_run::end_set() {
  count_hit();
  tell_hit();
  if (options_.keepall && !options_.update && options_.hits > 1)
    purge_above(context_, set_best_, pool_.first());
  cross_all();
  drop_worse_trees();
  if (is_reached() && consensus_.note_hit(result_.best) && options_.consense > 0) tell_consensus();
  adjust_after_hit();
  if (settings.status_replications > 0 && result_.sets % settings.status_replications == 0)
    report_status(context_, set_best_, true);
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
    search_set();
    if (interrupted()) break;
    end_set();
  }
  context_.shown.hits = result_.hits;
  drop_worse_trees();
  if (options_.consense > 0 && consensus_.tree().empty()) consensus_.look();
  result_.replications = makes_.made();
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
