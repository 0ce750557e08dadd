// Bremer supports from trees in memory, and how two trees compare character by character.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "supports/bremer_requests.h"
#include "trees/tree_record.h"

namespace zeb {

/// Trees beside the best one of them.
struct compared_trees {
  int best = 0;  // the first with the lowest score
  double best_score = 0;
  std::vector<double> excess;    // scores less the lowest
  std::vector<double> relative;  // relative fit differences to the best; empty if not wanted
};
/// Errors: the trees aren't of the same taxa, so that their scores can't be compared.
compared_trees compare_with_best(std::span<const const_tree_span> trees, bool with_relative);

/// The groups of the best of the trees asked for, by the others, which must be two or more in all.
bremer_result supports_from_trees(const bremer_request& request);

}  // namespace zeb
