// What ratchet and drift share: cycles of perturbing and repairing one tree, and the trees that are
// kept of them.
//
// A cycle leaves the tree in hand at a local optimum of the user's data, and the next one starts
// from there, better or worse. The best trees are stored on the way, or, where no slots are given,
// the best one is handed back.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "search/search_context.h"

namespace zeb {

/// The settings that ratchet and drift have in common.
struct cycle_settings {
  int iterations = 50;   // cycles
  int numsubs = 40;      // moves accepted in one perturbation
  bool equals = true;    // some cycles run without perturbation
  int giveup = 99;       // per cent of the nodes that a perturbation clips at most; 0 no limit
  double findscore = 0;  // stop when this score or a better one is found; 0 never
};

/// What is asked of a run, beside its settings.
struct cycle_task {
  int first_slot = -1;         // trees are stored from this slot on; negative: nothing is stored
  bool counts_cycles = false;  // the progress line shows the cycle as its replication
};

struct cycle_result {
  double best = unknown_score;
  int cycles = 0;            // done
  int hits = 0;              // cycles that ended with the best score
  int first_hit = 0;         // the first of these, from 1; 0: the tree that was given
  bool single_tree = false;  // unperturbed drift: the island has no other tree
};

/// Keeps what the cycles of one run find.
class cycle_keeper {
 public:
  /// Scores the tree (`tree` is in internal numbering, not a slot), where the run begins.
  cycle_keeper(search_context& context, std::span<std::int32_t> tree,
               const cycle_settings& settings, const cycle_task& task);

  /// The cycle `number`, from 0, begins.
  void begin_cycle(int number);
  /// The cycle ended with the tree at this score, or was stopped there. True: the run is over.
  bool end_cycle(double score);
  /// The run ends; without slots the tree becomes the best one.
  const cycle_result& finish();
  cycle_result& result() { return result_; }

 private:
  bool has_slots() const { return task_.first_slot >= 0; }
  score_kind kind() const { return kind_of_scores(context_.data); }
  void take_best(double score);
  void store(double score);

  search_context& context_;
  std::span<std::int32_t> tree_;
  const cycle_settings& settings_;
  const cycle_task task_;
  cycle_result result_;
  std::vector<std::int32_t> held_best_;  // without slots
};

}  // namespace zeb
