// Where the inner vertices of a tree lie when its branches are shortest together, for several
// points at a time, in vectors.
//
// The length of a tree is a convex function of the positions of its inner vertices, but its
// derivative jumps where vertices coincide. So each branch d counts as sqrt(d^2 + s^2), with a
// softness s far below all that matters: that has its least value at one place only, wherever the
// search for it begins, and positions there make a tree that is longer than the shortest one by
// some hundred-thousandths. The place is found by Newton steps in positions and pulls of branches
// together (Chan, Golub and Mulet 1999), with s halved from step to step: on a tree the equations
// of a step are solved by one walk from the terminals to the top and one back. Without pulls of
// their own, steps are sums of squares weighted anew each time (Weiszfeld 1937), which need some
// hundreds of rounds for the same; and Fermat points, vertex by vertex, stick where two coincide.
#pragma once

#include <span>

#include "landmarks/landmark_tree.h"
#include "landmarks/point_blocks.h"

namespace zeb {

/// Softness in spans of the point.
constexpr double last_softness = 1e-5;

/// Moves the vertices that are no terminals. `coordinates` are by vertex, dimension (`dimensions` 2
/// or 3) and lane; what vertices that move have there at first doesn't matter. Spans are above 0.
/// Lanes share nothing, but they take the same number of steps.
void find_shortest(const point_tree& tree, int terminals, int dimensions, const lane_values& spans,
                   std::span<double> coordinates);
/// The length of the tree in each lane.
lane_values lengths_of_lanes(const point_tree& tree, int dimensions,
                             std::span<const double> coordinates);

}  // namespace zeb
