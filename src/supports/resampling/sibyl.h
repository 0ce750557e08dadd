// How well reduced data foretell what more data will say: characters are deleted at random from
// data whose best trees are known, and the groups of the reduced data are looked up in those.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "supports/resampling/replicates.h"

namespace zeb {

/// What became of the groups of the reduced data, over all replicates. The group of all taxa but
/// the outgroup counts as one, so that a binary tree has as many as taxa, less two.
struct sibyl_result {
  int replications = 0;
  double groups = 0;            // that a replicate has, on average
  double supported = 0;         // of these are in all of the trees known before
  double compatible = 0;        // are in some of them, or in all
  double wrong = 0;             // aren't in the tree that errors are counted by
  double reference_groups = 0;  // that this tree has
  double missed = 0;            // of these aren't in a replicate
  double most_groups = 0;       // that a tree can have
};

/// Looks the groups up in the trees in memory. `reference` is the number of the tree that errors
/// are counted by, or -1.
sibyl_result foretold_groups(const replicates& sampled, int reference,
                             const std::vector<std::uint8_t>& left_out);

/// What the function `lastsibyl` tells, by its number.
struct last_sibyl_state {
  std::array<double, 10> values{};
};
extern last_sibyl_state last_sibyl;
/// Shares of the groups found (of the missing ones, of those of the reference tree), each followed
/// by the share of the groups that a tree can have: supported, compatible, wrong, missed; then the
/// groups of a replicate, and how many replicates there were.
void keep_sibyl(const sibyl_result& result);

/// `part` of `whole`; nothing of nothing is 0.
inline double share(double part, double whole) { return whole > 0 ? part / whole : 0; }

}  // namespace zeb
