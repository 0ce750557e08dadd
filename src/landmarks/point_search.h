// The shortest tree of one point by itself.
#pragma once

#include <span>

#include "landmarks/landmark_settings.h"
#include "matrix/landmark_points.h"

namespace zeb {

/// Length of the best tree that a Wagner tree and swapping its branches by TBR lead to, for these
/// positions of terminals; those that are missing are left out.
double shortest_tree_of_point(std::span<const landmark_point> terminals, int dimensions,
                              const landmark_settings& settings);

}  // namespace zeb
