#include "search/drivers/mult.h"

#include <algorithm>
#include <unordered_set>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/random.h"
#include "console/output.h"
#include "engine/passes/passes.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"
#include "trees/tree_store.h"

namespace zeb {

mult_settings mult;

namespace {

/// Seeds of replications: with a step, the one before plus the step; else drawn, each only once.
class seed_sequence {
 public:
  explicit seed_sequence(int first) : seed_(std::max(first, 1)) {}
  int current() const { return seed_; }
  void advance() {
    used_.insert(seed_);
    if (randomness.seed_step != 0) {
      const auto next = static_cast<unsigned>(seed_) + randomness.seed_step;
      seed_ = std::max(1, static_cast<int>(next & 0x7fffffffU));
      return;
    }
    auto next = static_cast<unsigned>(draw());
    while (used_.contains(static_cast<int>(next)) || next == 0) {
      unsigned divisor = 0;
      while (divisor == 0) divisor = static_cast<unsigned>(draw());
      next = static_cast<unsigned>(draw()) * next / divisor;
      if (next == 0) next = 1;
      next &= 0x7fffffffU;
      // A chain of collisions must not last: with few seeds left, take the nearest free one.
      while (used_.contains(static_cast<int>(next))) next = next % 0x7fffffffU + 1;
    }
    seed_ = static_cast<int>(next);
  }

 private:
  int seed_;
  std::unordered_set<int> used_;
};

/// One run of `mult`.
class replicated_search {
 public:
  explicit replicated_search(const mult_settings& options) : options_(options) {}
  mult_result run();

 private:
  void replicate(int seed);
  void swap_first();
  void swap_stored();
  void swap_single();
  void count_hit();
  bool swaps() const { return options_.swapper != mult_settings::wagner_only; }
  swapper selected() const { return options_.swapper == mult_settings::spr ? spr_swap : tbr_swap; }
  int swap_stage() const { return options_.swapper == mult_settings::spr ? stage_spr : stage_tbr; }

  const mult_settings& options_;
  mult_result result_;
  int first_slot_ = 0;
  double score_ = unknown_score;
};

/// SPR before anything is stored: a cheap way down for replications that keep several trees.
void replicated_search::swap_first() {
  const bool spr_single = options_.swapper == mult_settings::spr && options_.hold < 2;
  const bool tbr_single = options_.swapper == mult_settings::tbr && options_.hold < 2;
  const bool wanted =
      options_.hold > 1 || !swapping.mulpars || spr_single || (tbr_single && !swapping.skip_spr);
  // Under implied weights most trees of a replication differ in score, and the way down is short.
  if (!swaps() || !(wanted && (!current_search_data->implied_on || spr_single))) return;
  searching.stage = stage_spr;
  score_ = spr_swap(searching.anx, 0, 0);
}

/// The trees of this replication, each in turn; an improvement begins again with the first.
void replicated_search::swap_stored() {
  searching.score_limit = score_ + search_settings.suboptimal;
  for (int i = first_slot_; i < store.ntrees && !interrupted(); ++i) {
    searching.current_tree = searching.swapping_index = i;
    schgettree(slot_tree(i));
    const double found = selected()(searching.anx, first_slot_, searching.search_limit);
    if (found < score_ - score_rounding(*current_search_data)) {
      score_ = found;
      searching.score_limit = found + search_settings.suboptimal;
      searching.swapping_index = -1;
      purge_above(searching.score_limit, first_slot_);
      i = first_slot_ - 1;
      searching.current_tree = first_slot_;
    }
    if (settings.status_trees > 0 && (i - first_slot_ + 1) % settings.status_trees == 0) {
      report_status(score_, true);
    }
  }
  searching.swapping_index = -1;
  // Trees that another replication had stored already aren't here: then the score is theirs.
}

void replicated_search::swap_single() {
  searching.current_tree = store.ntrees;
  if (swapping.preproc != 0) swapping.preproc = 2;
  const bool quick_start = !swapping.mulpars && !current_search_data->implied_on;
  score_ = tbr_swap(searching.anx, first_slot_, quick_start ? -1 : 0);
  if (interrupted() && store.ntrees > first_slot_) return;
  searching.pending_score = score_;
  store_tree(searching.anx, store.ntrees);
}

void replicated_search::replicate(int seed) {
  score_ = unknown_score;
  first_slot_ = store.ntrees;
  searching.search_limit = static_cast<int>(std::min<std::int64_t>(
      store.maxtrees, static_cast<std::int64_t>(store.ntrees) + std::max(options_.hold, 1)));
  searching.score_limit = no_bound;
  searching.stage = stage_wagner;
  searching.current_tree = first_slot_;
  wagner_tree(slot_tree(first_slot_), seed);
  if (interrupted()) return;
  schgettree(slot_tree(first_slot_));
  swap_first();
  if (score_ >= unknown_score) score_ = tree_length(*current_search_data, searching.anx);
  searching.pending_score = score_;
  if (!swaps()) {
    report_status(score_, false);
    store_tree(searching.anx, first_slot_);
    return;
  }
  const bool single_tbr = options_.hold < 2 && options_.swapper == mult_settings::tbr;
  const bool is_new = single_tbr ? tree_is_new(searching.anx, first_slot_, score_)
                                 : store_tree(searching.anx, first_slot_);
  searching.pending_score = no_score;
  if (!is_new) return;  // swapping would retrace known ground
  searching.stage = swap_stage();
  if (options_.hold > 1) {
    swap_stored();
  } else if (single_tbr) {
    swap_single();
  }
}

void replicated_search::count_hit() {
  const bool overflowed = searching.search_limit == store.ntrees;
  if (same_score(*current_search_data, score_, result_.best)) {
    ++result_.hits;
    result_.overflowed |= overflowed;
  } else if (score_ < result_.best) {
    result_.hits = 1;
    result_.overflowed = overflowed;
    result_.best = score_;
    searching.best_score = score_;
  }
}

mult_result replicated_search::run() {
  result_.best = unknown_score;
  const int user_seed = randomness.random_seed;
  reseed();
  seed_sequence seeds(draw());
  searching.stage = stage_wagner;
  searching.current_tree = 0;
  searching.replication = 0;
  begin_reports();
  report_status(no_score, false);
  for (searching.replication = 1; searching.replication <= options_.replications;
       ++searching.replication) {
    if (store.ntrees >= store.maxtrees) {
      --searching.replication;
      report_status(no_score, true);
      emit(text_of("\nNOTE: Search terminated after replication %i (tree buffer full)\n",
                   searching.replication));
      result_.buffer_full = true;
      break;
    }
    const int seed = seeds.current();
    randomness.random_seed = seed;
    reseed();
    randomness.random_seed = -1;
    seeds.advance();
    replicate(seed);
    searching.current_tree = store.ntrees;
    if (score_ < unknown_score) {
      ++result_.replications_done;
      count_hit();
    }
    if (interrupted()) break;
    if (settings.status_replications > 0 &&
        searching.replication % settings.status_replications == 0) {
      report_status(score_, true);
    }
  }
  randomness.random_seed = user_seed;
  searching.search_limit = store.maxtrees;
  if (!interrupted() && !result_.buffer_full) --searching.replication;
  if (!result_.buffer_full) report_status(score_ < unknown_score ? score_ : no_score, true);
  return result_;
}

}  // namespace

mult_result mult_search(const mult_settings& options) {
  replicated_search search(options);
  return search.run();
}

}  // namespace zeb
