// The state that all searches share: the working tree, the records of the stored trees, scores,
// counters and what the progress report shows. `process.interrupt_state` says whether a search may
// go on; the trees themselves are in `store`.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "base/process.h"
#include "engine/search_data.h"
#include "search/moves/move_slots.h"
#include "search/search_settings.h"

namespace zeb {

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
};

/// Lives as long as the program; a search command sets it up on entry (see search_session).
struct search_state {
  // -- trees --
  std::span<std::int32_t> anx;  // the working tree, `nodes` entries; never a slot of the buffer
  std::span<tree_record> tree_records;                   // one per slot of the buffer
  std::array<tree_record, bucket_count> hash_buckets{};  // heads: only `next` is used
  std::span<std::int32_t> identity_scratch;              // twice `nodes`
  int search_limit = 0;                                  // highest `ntrees` the search may reach
  int swapping_index = -1;                               // slot of the tree being swapped; -1 none

  // -- what moves meet --
  move_slots slots;                       // unbound outside searches
  std::vector<slot_binder> slot_binders;  // of rooms that have something to bind

  // -- scores --
  double best_score = no_score;     // best of this search
  double lowest_seen = no_score;    // lowest of the full matrix since the last reset
  double pending_score = no_score;  // handed to the store; -1.0: the store computes it
  double score_limit = no_bound;    // score above which the swapper refuses a tree
  bool in_reduced_data = false;     // a sector is searched: best_score stays the full matrix's

  // -- the report --
  int replication = -1;  // current replication; negative prints as "---"
  int current_tree = 0;  // tree being swapped
  int stage = stage_wagner;
  int report_on = 0;        // progress flag + the three intervals of `report +S/R/T`
  bool hide_score = false;  // the score in hand is that of perturbed data
  bool hide_total = false;  // the line goes without the count of trees
  bool silent = false;      // a search inside another: no notes, no summary, no tree groups
  int wagner_percent = -1;  // done of the build that runs; -1 unknown
  bool header_pending = false;
  double last_report = 0;  // wall clock of the last line, of the last recorded one by interval
  double last_recorded = 0;
  double last_poll = 0;  // wall clock of the last look at the time and the steering files

  // -- counters --
  rearrangement_counter rearrangement_count;
  std::int64_t moves_done = 0;  // moves accepted or stored
  double hits_value = 0;        // hits of the last search, for the macro language
  double last_best = no_score;  // best score of the last search, for the macro language
  bool tbr_swapping = false;    // what `bbreak` did last, for the macro language
  bool spr_swapping = false;
};
extern search_state searching;

/// Scores closer than this are one score.
inline double score_rounding(const search_data& data) {
  return data.implied_on || data.has_continuous ? 1e-08 : 0.0;
}

inline bool interrupted() { return process.interrupt_state != 0; }

}  // namespace zeb
