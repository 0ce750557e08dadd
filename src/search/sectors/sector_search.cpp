#include "search/sectors/sector_search.h"

#include <algorithm>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "engine/passes/passes.h"
#include "search/drivers/drift.h"
#include "search/drivers/fusing.h"
#include "search/moves/shared_clades.h"
#include "search/moves/swapper.h"
#include "search/moves/wagner.h"
#include "search/part_search.h"
#include "search/sectors/sector_script.h"
#include "search/store/stored_trees.h"

namespace zeb {
namespace {

using tree_array = std::vector<std::int32_t>;

class sector_run {
 public:
  sector_run(search_context& context, tree_array present, double score,
             const sector_search_settings& how)
      : context_(context), how_(how), best_(std::move(present)), best_score_(score) {}
  void run();
  void run_commands(search_context& outer, const tree_sector& sector, const std::string& commands);
  /// Is there another tree to take?
  bool has_changed() const { return changed_; }
  const tree_array& best() const { return best_; }
  double score() const { return best_score_; }

 private:
  void search_from_starts(int starts, int fuse_rounds, bool drifts);
  /// The score of one start; `unknown_score` where it was stopped.
  double search_from_start(bool drifts);
  void drift_present();
  void fuse_starts(int rounds);
  void take(std::span<const std::int32_t> tree, double score);
  bool is_present_tree(std::span<const std::int32_t> tree) const;
  drift_settings cycles_of_drift() const;
  score_kind kind() const { return kind_of_scores(context_.data); }

  search_context& context_;
  const sector_search_settings& how_;
  tree_array best_;
  double best_score_;
  bool changed_ = false;
};

drift_settings sector_run::cycles_of_drift() const {
  drift_settings options = drift;
  options.cycles.iterations = how_.drift;
  options.cycles.findscore = 0;
  return options;
}

bool sector_run::is_present_tree(std::span<const std::int32_t> tree) const {
  return shared_clades(tree, best_, context_.data.n).size() == at(context_.data.n - 3);
}

void sector_run::take(std::span<const std::int32_t> tree, double score) {
  const bool better = is_better_score(score, best_score_, kind());
  if (!better &&
      !(how_.equals && is_same_score(score, best_score_, kind()) && !is_present_tree(tree)))
    return;
  best_.assign(tree.begin(), tree.end());
  best_score_ = score;
  changed_ = true;
}

double sector_run::search_from_start(bool drifts) {
  const std::span<std::int32_t> tree = context_.working_tree;
  context_.random.seed(static_cast<unsigned>(context_.random.draw()));
  wagner_tree(context_, tree, {});
  if (interrupted()) return unknown_score;
  double score = tbr_swap(context_, tree, {});
  if (drifts && !interrupted()) score = drift_search(context_, tree, cycles_of_drift(), {}).best;
  take(tree, score);
  return score;
}

/// Starts that all end with one score have found what there is; where they differ, as many more are
/// made.
void sector_run::search_from_starts(int starts, int fuse_rounds, bool drifts) {
  double lowest = unknown_score;
  double highest = 0;
  for (int i = 0; i < 2 * starts && !interrupted(); ++i) {
    if (i == starts && is_same_score(lowest, highest, kind())) break;
    const double score = search_from_start(drifts);
    if (score >= unknown_score) break;
    lowest = std::min(lowest, score);
    highest = std::max(highest, score);
    if (fuse_rounds > 0) store_tree(context_, context_.working_tree, context_.trees.ntrees, score);
  }
  if (fuse_rounds > 0 && !interrupted()) fuse_starts(fuse_rounds);
}

void sector_run::fuse_starts(int rounds) {
  fuse_task task;
  task.reseeds = task.shows_rounds = false;
  for (int t = 0; t < context_.trees.ntrees; ++t) task.slots.push_back(t);
  if (task.slots.size() < 2) return;
  fuse_settings options;
  options.rounds = rounds;
  fuse_trees(context_, options, task);
  for (int t = 0; t < context_.trees.ntrees; ++t) {
    fetch_tree(context_, slot_tree(context_, t));
    take(context_.working_tree, record_of(context_, t).score);
  }
}

void sector_run::drift_present() {
  const std::span<std::int32_t> tree = context_.working_tree;
  std::ranges::copy(best_, tree.begin());
  take(tree, drift_search(context_, tree, cycles_of_drift(), {}).best);
}

// Tried an exact search of sectors of up to 8 or 11 terminals: 0.3 steps better on the average of
// ten runs over 500 taxa, for 2.4 and 6 times the time.
void sector_run::run() {
  const int size = context_.data.n;
  constexpr int standard_rounds = 3;
  if (how_.gocomb > 0 && size >= how_.gocomb) {
    search_from_starts(how_.combstarts, how_.fuse > 0 ? how_.fuse : standard_rounds, true);
  } else if (size >= how_.godrift) {
    drift_present();
  } else {
    search_from_starts(how_.starts, how_.fuse, false);
  }
}

void sector_run::run_commands(search_context& outer, const tree_sector& sector,
                              const std::string& commands) {
  const script_result found = run_sector_script(outer, context_, sector, commands, how_.track);
  if (!found.tree.empty()) take(found.tree, found.score);
}

/// The user's for sectors of this level; empty: none.
std::string instructions_for(const search_context& outer, const sector_search_settings& how) {
  const std::size_t level = at(part_search.level);
  if (level >= how.instructions.size() || how.instructions[level].empty()) return {};
  if (outer.data.whole)
    error_end("Sorry, user instructions for sectors can't be used for landmark data");
  if (outer.own_data) error_end("Data are permuted: can't run user-defined routines");
  return how.instructions[level];
}

/// Slots for the starts and what their fusing brings.
int slots_needed(const sector_search_settings& how) {
  constexpr int standard_rounds = 3;
  return 2 * std::max(how.starts, how.combstarts) + std::max(how.fuse, standard_rounds) + 1;
}

}  // namespace

int largest_sector(const search_data& data, const sector_search_settings& how) {
  return largest_sector(data, slots_needed(how), how.slack);
}

bool search_sector(search_context& outer, std::span<std::int32_t> tree, const tree_sector& sector,
                   const sector_search_settings& how, double* score) {
  if (sector.terminals.size() < 3) return false;
  if (sector.terminals.size() > at(largest_sector(outer.data, how))) return false;
  tree_array found;
  double found_score = *score;
  {
    search_rules rules = outer.rules;
    rules.suboptimal = rules.relative_suboptimal = 0;
    context_scope scope(outer, sector, *score, slots_needed(how), rules);
    search_context& inner = scope.context();
    inner.random.seed(static_cast<unsigned>(outer.random.draw()));
    inner.shown.silent = true;
    inner.shown.hide_score = true;
    sector_run run(inner, tree_of_sector(tree, outer.data.n, sector), *score, how);
    const std::string commands = instructions_for(outer, how);
    if (commands.empty())
      run.run();
    else
      run.run_commands(outer, sector, commands);
    outer.rearrangements.add(inner.rearrangements);
    outer.moves_done += inner.moves_done;
    if (run.has_changed()) {
      found = run.best();
      found_score = run.score();
    }
  }
  if (found.empty() && how.xbuffer) return false;
  const tree_array before(tree.begin(), tree.end());
  if (!found.empty()) arrange_sector(tree, outer.data.n, sector, found);
  const double score_before = *score;
  *score = tree_length(outer.data, tree);
  if (outer.data.whole) {
    // The ends of the sector were taken to stay, so its own score is only about that of the tree.
    if (is_within_bound(*score, score_before, kind_of_scores(outer.data))) return !found.empty();
    std::ranges::copy(before, tree.begin());
    *score = tree_length(outer.data, tree);
    return false;
  }
  ALWAYS_CHECK(is_same_score(*score, found_score, kind_of_scores(outer.data)), "score of a sector");
  return !found.empty();
}

}  // namespace zeb
