// Laying one list of points on another. Point i of the one belongs to point i of the other.
#pragma once

#include <span>

#include "realign/similarity.h"

namespace zeb {

struct matched_points {
  int dimensions = 2;                         // 2 or 3
  std::span<const landmark_point> reference;  // none missing
  std::span<const landmark_point> target;     // as many
  std::span<const double> weights;            // as many; empty: all 1
};
struct superposition_rules {
  bool scales = false;  // the target's size may change
  bool turns = true;
};

/// Sum of the distances between the moved target's points and those of the reference, each times
/// the point's weight.
double sum_of_distances(const matched_points& points, const similarity& motion);
/// The motion of the target that makes this sum least. Where the target lies as well as it can
/// already it isn't moved at all.
similarity superimpose(const matched_points& points, const superposition_rules& rules);

/// The same for the sum of squared distances, each times `weights`.
similarity least_squares_motion(const matched_points& points, const superposition_rules& rules);

}  // namespace zeb
