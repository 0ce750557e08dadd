// One set of the combined search: replications, each fused with those before, whose trees are
// crossed and fused until they come to the score to hit.
//
// A set is a function of its seed, the score to hit and the settings. It keeps its trees in slots
// of its own and knows nothing of other sets, so that sets can be searched on several cores. Where
// there is only one to search, its replications are: they are fused in their order, whoever made
// them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/packet.h"
#include "search/combined/combined_settings.h"
#include "search/combined/replicator.h"
#include "search/combined/set_pool.h"
#include "search/drivers/part_outcome.h"
#include "search/drivers/seed_sequence.h"
#include "search/search_context.h"
#include "search/search_report.h"
#include "trees/tree_slots.h"

namespace zeb {

struct set_task {
  int seed = 1;
  double target = unknown_score;       // to hit; unknown_score: what it comes to is good enough
  std::vector<std::int32_t> previous;  // the tree that its first ones follow; empty: none
  int replications_before = 0;         // of other sets, for the report
};

struct set_outcome {
  part_state end;            // `score` is the best
  bool gave_up = false;      // it has a score to give up at
  bool buffer_full = false;  // no more trees could be stored
  int made = 0;              // replications
  int best_replication = 0;  // that of the last improvement; trees fused count to the last one
  double time_of_best = 0;   // wall clock, seconds
  int failures = 0;          // crossings that didn't reach the target, but for the first ones
  int more_effort = 0;       // times that the set took more effort after failures
  std::vector<found_tree> trees;
  std::vector<status_mark> lines;  // that are still to be recorded
};
void put(const set_outcome& outcome, packet_writer& to);
set_outcome set_in(std::span<const std::byte> bytes);

class set_search {
 public:
  /// All given outlives it. A set goes by `options` and `stages` as they are when it begins.
  set_search(search_context& outer, const combined_settings& options,
             const combined_stages& stages);
  set_outcome search(const set_task& task);

 private:
  void begin(const set_task& task);
  void search_all(std::span<const std::int32_t> follows);
  void replicate_some(int count, std::span<const std::int32_t> follows);
  std::vector<int> seeds_for(int replications);
  bool make_room();
  void take(const made_replication& made);
  void take_replication(const made_replication& made);
  void record_line(double score);
  void choose_crossing();
  bool cross_until_reached();
  void go_on_from_failure(int failures);
  void take_more_effort();
  void retouch();
  void drop_worse_trees();
  void take_best(double score, double time);
  set_outcome finish();

  bool has_target() const { return target_ < unknown_score; }
  double target_or_none() const { return has_target() ? target_ : 0; }
  bool is_reached() const {
    return is_within_bound(outcome_.end.score, target_, kind()) || outcome_.gave_up;
  }
  bool is_over() const;
  int free_slots() const { return context_.trees.maxtrees - context_.trees.ntrees; }
  score_kind kind() const { return kind_of_scores(context_.data); }

  search_context& outer_;
  const combined_settings& wanted_;
  const combined_stages& wanted_stages_;
  combined_settings options_;
  combined_stages stages_;
  const double start_;  // of the run; wall clock
  private_slots slots_;
  context_scope scope_;
  search_context& context_;
  const pool_watch watch_;
  replicator makes_;
  set_pool pool_;
  set_outcome outcome_;
  std::optional<seed_sequence> seeds_;
  std::vector<std::int32_t> last_;  // the tree of the last replication
  double target_ = unknown_score;
  int replications_before_ = 0;
  bool hybridizes_ = false;  // the set's trees are crossed
  bool fuses_ = false;       // ... and fused
};

}  // namespace zeb
