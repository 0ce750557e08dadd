// One replication: a tree is built, improved until it is a local optimum, and where several trees
// are wanted, those as good as it are looked for around it.
//
// A replication is a function of its seed, the data and the settings. It keeps its trees in slots
// of its own, and doesn't know what other replications found: they can be done in any order, and on
// several cores. That search would be wasted where another replication came to the same optimum
// before; so each tells at which steps it stood at a tree that might be known, and whoever takes
// the replications in order says which are, and lets them end there.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "base/packet.h"
#include "search/drivers/mult_settings.h"
#include "search/drivers/part_outcome.h"
#include "search/search_context.h"
#include "trees/tree_slots.h"

namespace zeb {

/// A tree at which the replication would have ended, were it known.
struct replication_step {
  part_state state;
  std::vector<std::int32_t> form;
};

struct replication_outcome {
  std::vector<replication_step> steps;
  bool ended_as_known = false;  // at the last step
  part_state end;
  std::vector<found_tree> trees;
  bool full = false;               // all slots that it may have were taken
  std::vector<status_mark> lines;  // that are still to be recorded
};
void put(const replication_outcome& outcome, packet_writer& to);
replication_outcome replication_in(std::span<const std::byte> bytes);

/// Is a tree in normal form, with this score, known?
using known_test = std::function<bool(std::span<const std::int32_t> form, double score)>;

class replication_maker {
 public:
  /// All given outlives it. `is_known` says at which steps a replication ends; it is asked again
  /// between the trees that are swapped after the last step.
  replication_maker(search_context& outer, const mult_settings& options, const mult_stages& stages,
                    known_test is_known);
  /// `next_seed`: that of the stages after swapping. The generator of the outer search isn't used.
  replication_outcome make(int seed, int next_seed);

 private:
  void begin();
  void search(int seed, int next_seed);
  void swap_first();
  void improve();
  void record_line();
  void swap_around();
  void swap_single();
  void ratchet_and_drift(int seed);
  bool ends_here();
  void finish();
  bool swaps_by_spr() const { return options_.swapper == mult_settings::spr; }
  bool is_quick_start() const { return !how_.mulpars && !context_.data.implied_on; }
  score_kind kind() const { return kind_of_scores(context_.data); }

  const mult_settings& options_;
  const mult_stages& stages_;
  known_test is_known_;
  private_slots slots_;
  context_scope scope_;
  search_context& context_;
  const swap_settings& how_;
  replication_outcome outcome_;
  double score_ = unknown_score;
};

}  // namespace zeb
