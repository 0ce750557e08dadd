// How long the branches of a tree are: by the changes that its characters have along them.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "engine/fit/fit_rules.h"
#include "mapping/state_optimisation.h"

namespace zeb {

/// Of a node that has no branch, or none of the kind asked for.
constexpr double no_length = std::numeric_limits<double>::quiet_NaN();

/// Weighted steps of characters along the branch below each node, continuous ones in whole units:
/// the least and the most that any reconstructions have there. Landmarks have one reconstruction.
struct length_ranges {
  std::vector<double> least;
  std::vector<double> most;
};
length_ranges branch_lengths(const tree_shape& shape, const std::vector<int>& characters,
                             polytomy_kind polytomies);

/// The largest rise and fall of a continuous character along a branch, in thousandths.
struct largest_changes {
  std::int64_t rise = 0;
  std::int64_t fall = 0;
  int character_of_rise = -1;
  int character_of_fall = -1;
};
/// Of any of the characters, all of them continuous; polytomies hard.
std::vector<largest_changes> changes_in_size(const tree_shape& shape,
                                             const std::vector<int>& characters);

/// By internal node: what the score of the tree grows by when the branch below the node is taken
/// away; polytomies hard. By `rules` these are fits, or, where they are off, steps.
std::vector<double> costs_of_collapsing(const tree_shape& shape, const std::vector<int>& characters,
                                        const fit_rules& rules);

}  // namespace zeb
