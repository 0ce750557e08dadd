// What joining two branches adds to the length of a tree over points in space, where all nodes that
// are there stay, for one block of points at a time.
#pragma once

#include "landmarks/point_blocks.h"

namespace zeb {

/// A branch by its two ends.
struct branch_ends {
  int lower = -1;
  int upper = -1;
};
/// What a joining adds to the length of each lane at least about, where all nodes that are there
/// stay: a new node on `target`, and one on `own`, unless that is one node (`upper` -1).
lane_values joining_lengths(const point_block& block, const node_positions& positions,
                            branch_ends own, branch_ends target);
/// Below or equal to that, and quickly told. The lengths of the branches `own` (unless that is one
/// node) and `target` by lane.
lane_values least_joining_lengths(const point_block& block, const node_positions& positions,
                                  branch_ends own, branch_ends target, const double* own_length,
                                  const double* target_length);
/// Puts the new nodes of a joining to their places: `joint` on the branch `target`, `root` on the
/// branch `own`. `root` -1: `own` is one node.
void place_joint(const point_block& block, branch_ends own, branch_ends target, int joint, int root,
                 node_positions& positions);

}  // namespace zeb
