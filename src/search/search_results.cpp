#include "search/search_results.h"

namespace zeb {

search_results last_search;

void keep_counters(const search_context& context) {
  last_search.exact_solution = false;
  last_search.lowest_score = context.lowest_score;
  last_search.replication = context.shown.replication;
  last_search.moves_done = context.moves_done;
  last_search.rearrangements = context.rearrangements;
  last_search.landmark_errors = context.landmark_errors;
}

void keep_best_score(double best) { last_search.best = best; }
void keep_hits(int hits) { last_search.hits = hits; }

void keep_exactness(bool exact) { last_search.exact_solution = exact; }

void keep_swapper(bool is_tbr) {
  last_search.swapped_by_tbr = is_tbr;
  last_search.swapped_by_spr = !is_tbr;
}

void forget_lowest_score() { last_search.lowest_score = no_score; }

}  // namespace zeb
