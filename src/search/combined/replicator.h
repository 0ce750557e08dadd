// The replications of the combined search: each builds a tree and improves it by all means.
//
// A replication may begin with what it shares with the one before: clades that both trees have are
// kept while the tree is swapped for the first time. Two independent trees rarely agree by
// chance, so little is lost, and the swap is faster by what needn't be tried. Then all is free.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "search/combined/combined_settings.h"
#include "search/drivers/auto_constraint.h"
#include "search/drivers/seed_sequence.h"
#include "search/search_context.h"

namespace zeb {

/// Who is told what replications find, and says when they must end.
struct replication_watch {
  std::function<void(double score)> found;
  std::function<bool()> is_over;
};

class replicator {
 public:
  /// All given outlives it; settings may change between replications. The seeds are drawn from the
  /// context's generator.
  /// `before`: replications that were made by others, for the report.
  replicator(search_context& context, const combined_settings& options,
             const combined_stages& stages, const replication_watch& watch, int before);

  /// The next replication has this tree (internal numbering) as the one before; empty: none.
  void follow(std::span<const std::int32_t> tree);
  bool follows_another() const { return !previous_.empty(); }
  /// Makes one; its tree, or those that were to be saved, come into the next slots, of which one
  /// must be free. Returns the best score, `unknown_score` where it was stopped before it had any.
  double make_next();
  /// Improves the working tree, whose score this is, by sectors and cycles, and stores what comes
  /// of it as above.
  double improve_and_store(double score);
  int made() const { return made_; }

 private:
  void build();
  double swap_first();
  void constrain_after(int step);
  double search_sectors_of(sector_settings::selection_kind selection, double score);
  double rebuild(double score);
  template <class settings, class search>
  double run_cycles_of(settings how, int cycles, const search& run, double score);
  double note(double score);

  search_context& context_;
  const combined_settings& options_;
  const combined_stages& stages_;
  const replication_watch& watch_;
  seed_sequence seeds_;
  std::vector<std::int32_t> previous_;
  std::optional<auto_constraint> constraint_;
  int first_slot_ = 0;  // of the replication
  int before_;
  int made_ = 0;
};

}  // namespace zeb
