// The replications of the combined search: each builds a tree and improves it by all means.
//
// A replication may begin with what it shares with another one: clades that both trees have are
// kept while the tree is swapped for the first time. Two independent trees rarely agree by
// chance, so little is lost, and the swap is faster by what needn't be tried. Then all is free.
//
// It is a function of its seed, the tree that it follows, the data and the settings, and keeps its
// trees in slots of its own: replications can be made on several cores.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/packet.h"
#include "search/combined/combined_settings.h"
#include "search/drivers/auto_constraint.h"
#include "search/drivers/part_outcome.h"
#include "search/search_context.h"
#include "trees/tree_slots.h"

namespace zeb {

/// What one replication came to.
struct made_replication {
  part_state end;                  // `score` is the best
  bool gave_up = false;            // it has a score to give up at
  double time_of_best = 0;         // wall clock, seconds
  std::vector<std::int32_t> last;  // where it ended, for others to follow; internal numbering
  std::vector<found_tree> trees;
};
void put(const made_replication& made, packet_writer& to);
made_replication replication_from(packet_reader& from);

class replicator {
 public:
  /// All given outlives it; settings may change between replications. The generator of the outer
  /// search isn't used.
  replicator(search_context& outer, const combined_settings& options,
             const combined_stages& stages);

  /// `follows` (internal numbering): the tree of another one; empty: none.
  made_replication make(int seed, std::span<const std::int32_t> follows);
  /// Improves a tree, whose score this is, by sectors and cycles.
  made_replication improve(int seed, std::span<const std::int32_t> tree, double score);

 private:
  void begin(int seed);
  made_replication finish();
  double swap_first(std::span<const std::int32_t> follows);
  void constrain_after(int step, std::span<const std::int32_t> follows);
  void improve_and_store(double score);
  double search_sectors_of(sector_settings::selection_kind selection, double score);
  double rebuild(double score);
  template <class settings, class search>
  double run_cycles_of(settings how, int cycles, const search& run, double score);
  double note(double score);
  bool is_over() const;

  const combined_settings& options_;
  const combined_stages& stages_;
  private_slots slots_;
  context_scope scope_;
  search_context& context_;
  std::optional<auto_constraint> constraint_;
  made_replication made_;
};

}  // namespace zeb
