// Bremer supports from trees in memory, and how two trees compare character by character.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/scores.h"
#include "engine/fit/fit_rules.h"
#include "engine/plain/plain_optimisation.h"
#include "supports/bremer_requests.h"
#include "trees/tree_record.h"

namespace zeb {

/// Compares trees with one of them, character by character, under the settings in force.
class tree_comparer {
 public:
  tree_comparer();
  double score(const_tree_span tree);
  /// Trees are compared with this one from now on; `with_evidence` also by their characters.
  void set_reference(const_tree_span tree, bool with_evidence);
  struct difference {
    double excess = 0;           // of the score
    double relative = no_bound;  // relative fit difference, with evidence
  };
  difference compare(const_tree_span tree);

 private:
  std::vector<double> evidence() const;

  std::vector<std::uint8_t> characters_;
  fit_rules rules_;
  plain_optimiser optimiser_;
  double reference_score_ = 0;
  std::vector<double> reference_evidence_;  // empty: not wanted
};

/// Trees beside the best one of them, the first with the lowest score.
struct compared_trees {
  int best = 0;
  std::vector<tree_comparer::difference> differences;  // no excess is below 0
};
/// Errors: the trees aren't of the same taxa, so that their scores can't be compared.
compared_trees compare_with_best(std::span<const const_tree_span> trees, bool with_relative);

/// The groups of the best of the trees asked for, by the others, which must be two or more in all.
bremer_result supports_from_trees(const bremer_request& request);

}  // namespace zeb
