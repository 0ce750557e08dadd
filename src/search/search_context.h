// The search context: everything that one search works on.
//
// A search reads the settings of the user once, when its context is made (`rules_in_force`), and
// from then on all that it reads and changes hangs on the context: the packed data with the tree in
// work, the slots where trees are stored and what is known of each of them, limits, counters, the
// generator and what the progress line shows. Functions of this room take the context as an
// argument; none of them keeps state anywhere else. So a search can be stopped at any point,
// another one run over other data, and the first one taken up again as if nothing had been in
// between.
//
// Reduced data. Whatever looks at a part of the problem (a sector of a tree, some of the taxa,
// characters with other weights, a task that another machine works on) is a search over a data set
// of its own: a `packing_request` names taxa and weights, and a `context_scope` packs them beside
// the data of the outer search, makes slots for the trees that come of it, and opens a context
// there. All of that lies above what the outer search has in the arena, and goes when the scope
// ends, whether by its last brace, an error or an interrupt. Nothing of the outer context is
// touched: its data, node sets, undo log, generator and counters stand as they were left, also in
// the midst of a swap. What the inner search found must be read before the scope ends; who wants
// its work to count adds its counters to those of the outer context.
//
// Sectors of a tree stand on this, too: what leaves a sector becomes terminals, whose sets are
// copied from those of the outer data (`engine/packing/reduced_data.h`), and the inner score is
// that of the whole tree. A sector's search may cut sectors of its own: contexts nest as deep as
// the arena allows.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "base/arena.h"
#include "base/interrupts.h"
#include "base/random.h"
#include "base/scores.h"
#include "engine/collapsing/collapsing.h"
#include "engine/packing/packing_request.h"
#include "engine/packing/reduced_data.h"
#include "engine/search_data.h"
#include "search/landmarks/estimate_errors.h"
#include "search/moves/move_slots.h"
#include "search/moves/search_constraints.h"
#include "search/search_settings.h"
#include "trees/tree_slots.h"

namespace zeb {

/// How a search goes about its work.
struct search_rules {
  swap_settings swap;
  int clips_between_reports = 0;  // 0: by the size of the data
  double suboptimal = 0;          // trees up to this much above the best are kept; score units
  double relative_suboptimal =
      0;  // largest relative fit difference to the tree being swapped; 0 off
  collapsing_settings collapse;
  unsigned seed_step = 0;         // from a replication's seed to the next one's; 0: drawn
  bool random_insertion = false;  // the builder tries branches in random order
  bool random_outgroup = false;   // the builder takes any taxon as the outgroup
};
/// The rules by the user's settings.
search_rules rules_in_force();

/// What a search knows of one stored tree. A bucket's chain runs from its newest tree to its
/// oldest.
struct tree_record {
  double score = unknown_score;
  std::int32_t* tree = nullptr;  // the slot's ancestor array, internal numbering, normal form
  tree_record* next = nullptr;
  tree_record* prev = nullptr;
  std::int32_t bucket = 0;  // 0 to 127
  bool waits = false;       // a tree that the user had, still to be swapped
  bool taken_in = false;    // a tree that the user had: may be the same as another
};
constexpr int bucket_count = 128;

/// What is known of the trees in the slots. See stored_trees.h.
struct tree_records {
  std::span<tree_record> of_slot;
  std::array<tree_record, bucket_count> buckets{};  // heads: only `next` is used
  std::span<std::int32_t> scratch;                  // twice `nodes`, for normal forms
};

enum search_stage : int {
  stage_wagner,
  stage_spr,
  stage_tbr,
  stage_sector,
  stage_drift,
  stage_ratchet,
  stage_fuse,
  stage_pinon,
  stage_hybrid,
  stage_rebuild,
};

/// What the progress line shows.
struct search_display {
  int replication = -1;  // current replication; negative prints as "---"
  int current_tree = 0;  // tree being swapped
  int stage = stage_wagner;
  int build_percent = -1;   // done of the build that runs; -1 unknown
  bool hide_score = false;  // the score in hand is that of perturbed data
  bool hide_total = false;  // the line goes without the count of trees
  int hits = -1;            // to the best score, of a search that counts them; -1 it doesn't
  int hits_wanted = 0;
  double last_gain = 0;  // when such a search found its best score; wall clock, seconds
  bool silent = false;   // a search inside another: no lines, no notes, no tree groups
};

/// When the next progress line is due. Times are wall clock, in seconds.
struct report_clock {
  int report_on = 0;  // progress flag + the three intervals of `report +S/R/T`
  bool header_pending = false;
  double last_line = 0;
  double last_recorded = 0;  // by the interval of time
  double last_poll = 0;      // last look at the time and the steering files
};

/// Rearrangements examined: `low` stays below 1,000,000,000 and `high` counts those units.
struct rearrangement_counter {
  std::uint64_t low = 0;
  std::uint64_t high = 0;
  void add(std::uint64_t n) {
    low += n;
    if (low >= 1'000'000'000) {
      high += low / 1'000'000'000;
      low %= 1'000'000'000;
    }
  }
  void add(const rearrangement_counter& other) {
    high += other.high;
    add(other.low);
  }
  std::uint64_t since(const rearrangement_counter& before) const {
    return (high - before.high) * 1'000'000'000 + low - before.low;
  }
  double total() const { return static_cast<double>(high) * 1e9 + static_cast<double>(low); }
};

/// Made by a `context_scope`.
struct search_context {
  search_context(search_data& packed, tree_slots& slots, const search_rules& how);
  search_context(const search_context&) = delete;
  search_context& operator=(const search_context&) = delete;

  search_data& data;
  tree_slots& trees;  // records of `data.nodes` entries at least, in the numbering of `data`
  search_rules rules;
  search_context* outer = nullptr;  // the search in whose midst this one runs
  search_context* part = nullptr;   // one over the same data, what came of which isn't taken yet
  bool own_data = false;  // not those of the user: scores can't be compared with those of `outer`
  random_generator random;
  move_slots slots;  // what moves meet beyond the packed sets
  std::unique_ptr<search_constraints> constraints_in_force;  // null: none are in force

  std::span<std::int32_t> working_tree;  // `nodes` entries; never a slot
  tree_records records;
  int tree_limit = 0;       // highest number of trees that the search may reach
  int swapping_index = -1;  // slot of the tree being swapped; -1 none

  double best_score = no_score;    // best of this search
  double lowest_score = no_score;  // lowest of the user's data since they were read
  double score_limit = no_bound;   // score above which the swapper refuses a tree

  search_display shown;
  report_clock own_clock;
  report_clock* clock = &own_clock;  // that of the outermost search: they share one line

  estimate_errors landmark_errors;  // of swaps
  rearrangement_counter rearrangements;
  std::int64_t moves_done = 0;  // moves applied, trees stored
};

/// Opens a search context, and closes it whatever happens; the arena is put back. No locks may be
/// taken, and no scopes of the arena that were opened before may end, as long as one lives.
class context_scope {
 public:
  /// A search of its own over packed data that are there.
  context_scope(search_data& data, tree_slots& trees, const search_rules& rules,
                const random_generator& random);
  /// A search over a data set of its own, in slots of its own for `capacity` trees, whose generator
  /// starts at `seed`. It runs in the midst of `outer`, or by itself. Errors: those of packing.
  context_scope(const packing_request& request, int capacity, const search_rules& rules,
                unsigned seed, search_context* outer = nullptr);
  /// A search over a sector of the tree in work of `outer`, whose score is `score`; see
  /// reduced_data.h. Scores of the inner search are those of the whole tree.
  context_scope(search_context& outer, const tree_sector& sector, double score, int capacity,
                const search_rules& rules);
  /// A search over the data of `outer` and under its rules, with slots of its own: it doesn't know
  /// of the trees that are stored there.
  context_scope(search_context& outer, tree_slots& trees);
  ~context_scope();
  context_scope(const context_scope&) = delete;
  context_scope& operator=(const context_scope&) = delete;

  search_context& context() { return context_; }

 private:
  void begin_within(search_context& outer);

  arena_scope memory_;
  search_data own_data_;  // these two are empty where others are used
  tree_slots own_slots_;
  search_context context_;
};

/// Scores are sums of steps, or of fractions.
inline score_kind kind_of_scores(const search_data& data) {
  return data.implied_on || data.has_continuous || data.whole ? score_kind::fractional
                                                              : score_kind::whole;
}

}  // namespace zeb
