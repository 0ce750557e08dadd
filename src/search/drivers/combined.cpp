#include "search/drivers/combined.h"

#include <algorithm>
#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/settings.h"
#include "engine/passes/passes.h"
#include "search/drivers/seed_sequence.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"

namespace zeb {

combined_settings combined;

namespace {

class combined_run {
 public:
  combined_run(search_context& context, const combined_settings& options,
               const combined_stages& stages)
      : context_(context),
        options_(options),
        stages_(stages),
        seeds_(context.random, context.rules.seed_step),
        start_(wall_clock()) {}
  combined_result run();

 private:
  /// Trees of one hit; returns their best score.
  double search_set();
  double replicate_some(int count);
  double replicate();
  double improve_by_sectors(std::span<std::int32_t> tree, double score);
  double improve_by_cycles(std::span<std::int32_t> tree, double score);
  double fuse_from(int first, double target);
  void fuse_all();
  void count_hit(double score);
  void tell_hit(double score);
  void drop_worse_trees();
  void take_best(double score);

  bool has_target() const { return target_ < unknown_score; }
  bool is_over() const { return interrupted() || result_.gave_up || result_.buffer_full; }
  int free_slots() const {
    return std::min(context_.tree_limit, context_.trees.maxtrees) - context_.trees.ntrees;
  }
  score_kind kind() const { return kind_of_scores(context_.data); }

  search_context& context_;
  const combined_settings& options_;
  const combined_stages& stages_;
  seed_sequence seeds_;
  const double start_;
  combined_result result_;
  double target_ = unknown_score;
  int first_of_set_ = 0;  // slot
};

void combined_run::take_best(double score) {
  if (is_better_score(score, result_.best, kind())) {
    result_.best = score;
    result_.seconds_to_best = wall_clock() - start_;
    if (context_.best_score < 0 || is_better_score(score, context_.best_score, kind()))
      context_.best_score = score;
    note_score(context_, score);
  }
  if (options_.giveupscore > 0 && is_within_bound(score, options_.giveupscore, kind()))
    result_.gave_up = true;
}

double combined_run::improve_by_sectors(std::span<std::int32_t> tree, double score) {
  sector_settings how = stages_.sectors;
  how.findscore = options_.giveupscore;
  for (const auto& [wanted, selection] : {std::pair{options_.rss, sector_settings::random},
                                          std::pair{options_.xss, sector_settings::exclusive}}) {
    if (!wanted || is_over()) continue;
    how.selection = selection;
    score = search_sectors(context_, tree, how);
    take_best(score);
  }
  return score;
}

double combined_run::improve_by_cycles(std::span<std::int32_t> tree, double score) {
  if (options_.ratchet > 0 && !is_over()) {
    ratchet_settings how = stages_.ratchet;
    how.cycles.iterations = options_.ratchet;
    how.cycles.findscore = options_.giveupscore;
    score = ratchet_search(context_, tree, how, {}).best;
    take_best(score);
  }
  if (options_.drift > 0 && !is_over()) {
    drift_settings how = stages_.drift;
    how.cycles.iterations = options_.drift;
    how.cycles.findscore = options_.giveupscore;
    score = drift_search(context_, tree, how, {}).best;
    take_best(score);
  }
  return score;
}

double combined_run::replicate() {
  context_.random.seed(static_cast<unsigned>(seeds_.current()));
  seeds_.advance();
  const int slot = context_.trees.ntrees;
  context_.shown.replication = ++result_.replications;
  context_.shown.current_tree = slot;
  context_.shown.stage = stage_wagner;
  const std::span<std::int32_t> tree = context_.working_tree;
  wagner_tree(context_, tree, options_.addition);
  if (interrupted()) return unknown_score;
  const bool spr_first = !context_.rules.swap.mulpars && !context_.data.implied_on;
  double score = unknown_score;
  if (spr_first) {
    context_.shown.stage = stage_spr;
    score = spr_swap(context_, tree, {});
  }
  context_.shown.stage = stage_tbr;
  if (!interrupted()) score = tbr_swap(context_, tree, {.multi = spr_first ? -1 : 0});
  take_best(score);
  score = improve_by_sectors(tree, score);
  score = improve_by_cycles(tree, score);
  // Also a tree that was stopped on its way is kept.
  store_tree(context_, tree, slot, score);
  report_status(context_, score,
                settings.status_trees > 0 && result_.replications % settings.status_trees == 0);
  return score;
}

double combined_run::replicate_some(int count) {
  double best = unknown_score;
  for (int i = 0; i < count && !is_over(); ++i) {
    if (free_slots() <= 0) drop_worse_trees();
    if (free_slots() <= 0) {
      result_.buffer_full = true;
      break;
    }
    best = std::min(best, replicate());
  }
  return best;
}

/// Fuses the trees from slot `first` on; returns the best score of all of them.
double combined_run::fuse_from(int first, double target) {
  fuse_settings how = stages_.fuse;
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

/// Where the set stays above the target, more replications are made and fused with the others. With
/// a target that the user gave this goes on until it is reached, or the search is stopped.
double combined_run::search_set() {
  first_of_set_ = context_.trees.ntrees;
  double score = replicate_some(options_.replications);
  if (options_.fuse <= 0) return score;
  score = std::min(score, fuse_from(first_of_set_, 0));
  while (has_target() && is_better_score(target_, score, kind()) && !is_over()) {
    score = std::min(score, replicate_some(std::max(1, options_.replications / 2)));
    score = std::min(score, fuse_from(first_of_set_, target_));
  }
  return score;
}

void combined_run::fuse_all() {
  const double before = target_;
  const double score = fuse_from(0, 0);
  if (options_.update && is_better_score(score, before, kind())) {
    target_ = score;
    result_.hits = 1;
  }
}

void combined_run::count_hit(double score) {
  ++result_.sets;
  if (score >= unknown_score) return;
  if (!has_target() || (options_.update && is_better_score(score, target_, kind()))) {
    target_ = score;
    result_.hits = 0;
  }
  if (is_within_bound(score, target_, kind())) ++result_.hits;
}

void combined_run::tell_hit(double score) {
  if (!options_.verbose || context_.shown.silent) return;
  emit(text_of("   Set %i: score %s; best score %s hit %i times\n", result_.sets,
               score_text(context_.data, score).c_str(), score_text(context_.data, target_).c_str(),
               result_.hits));
}

void combined_run::drop_worse_trees() {
  if (!options_.keepall && result_.best < unknown_score)
    purge_above(context_, result_.best + context_.rules.suboptimal, 0);
}

combined_result combined_run::run() {
  if (options_.targetscore > 0) target_ = options_.targetscore;
  context_.shown.stage = stage_wagner;
  begin_reports(context_);
  report_status(context_, no_score, false);
  while (result_.hits < options_.hits && !is_over()) {
    const double score = search_set();
    if (!interrupted()) count_hit(score);
    tell_hit(score);
    if (options_.gfuse > 0 && result_.hits > 0 && result_.hits % options_.gfuse == 0) fuse_all();
    if (!(options_.multiply && result_.hits >= options_.hits)) drop_worse_trees();
    if (settings.status_replications > 0 && result_.sets % settings.status_replications == 0)
      report_status(context_, score, true);
  }
  if (options_.multiply && options_.fuse > 0 && !is_over()) fuse_from(first_of_set_, 0);
  drop_worse_trees();
  return result_;
}

}  // namespace

combined_result combined_search(search_context& context, const combined_settings& options,
                                const combined_stages& stages) {
  return combined_run(context, options, stages).run();
}

void set_level(combined_settings& options, sector_settings& sector, double level, int taxa) {
  const auto rounded = [](double value) { return static_cast<int>(value + 0.5); };
  constexpr int standard_size = 45;
  const double base = taxa * 0.5;
  double size = base - 2 / (level + 1) * base;
  if (level >= 3) size += size / 4;
  if (size < standard_size) {
    sector.minsize = sector.maxsize = base < standard_size ? rounded(base) : standard_size;
  } else {
    sector.maxsize = rounded(std::min(size, base));
    sector.minsize = std::min(sector.maxsize, standard_size);
  }
  sector.minsize = std::max(5, sector.minsize);
  sector.maxsize = std::max(5, sector.maxsize);
  sector.dglobal = taxa >= 500 ? rounded((taxa + taxa) / 100.0) : 10;
  sector.global = std::max(1, rounded(taxa * 0.75 / sector.maxsize));
  sector.increase = 75;
  sector.selfactor = static_cast<int>(100 - level / (level + 2) * 100);
  sector.selection_count = 0;
  options.fuse = std::max(3, static_cast<int>(level));
  options.drift = level <= 2 ? 0 : level > 5.5 ? rounded((level - 4) * 6) : 4;
  options.ratchet = 0;
  options.replications = static_cast<int>(level) + 4;
  options.level = level;
}

}  // namespace zeb
