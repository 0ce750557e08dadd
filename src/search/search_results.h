// What outlives a search: read by expression functions and by later commands.
#pragma once

#include <cstdint>

#include "base/scores.h"
#include "search/search_context.h"

namespace zeb {

/// Of the last search that ended, on whatever path; written by the functions below.
struct search_results {
  double hits = 0;                       // replications that found the best score; last `mult`
  double best = no_score;                // best score of the last search that told one
  double lowest_score = no_score;        // lowest score of the matrix that any search has seen
  int replication = -1;                  // the last one begun; -1 none
  std::int64_t moves_done = 0;           // moves applied, trees stored
  rearrangement_counter rearrangements;  // examined
  estimate_errors landmark_errors;       // of estimates of landmark costs
  bool exact_solution = false;           // it proved that no tree is better
  bool swapped_by_tbr = false;           // what the last `bbreak` did
  bool swapped_by_spr = false;
};
extern search_results last_search;

/// The end of a search: its counters.
void keep_counters(const search_context& context);
void keep_best_score(double best);
void keep_hits(int hits);
/// Did the search prove that no tree is better, and that it has them all?
void keep_exactness(bool exact);
void keep_swapper(bool is_tbr);
/// Scores of other data can't be compared.
void forget_lowest_score();

}  // namespace zeb
