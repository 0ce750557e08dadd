// Points that are near to others: the Fermat point of three, the geometric median of many.
#pragma once

#include <cmath>
#include <span>

#include "matrix/landmark_points.h"

namespace zeb {

inline double squared_distance(const landmark_point& a, const landmark_point& b) {
  const double x = a.x - b.x;
  const double y = a.y - b.y;
  const double z = a.z - b.z;
  return x * x + y * y + z * z;
}
inline double distance(const landmark_point& a, const landmark_point& b) {
  return std::sqrt(squared_distance(a, b));
}

/// The point whose distances from three points have the least sum, in two or three dimensions.
landmark_point fermat_point(const landmark_point& a, const landmark_point& b,
                            const landmark_point& c);
/// That sum, without making the point.
double fermat_distance(const landmark_point& a, const landmark_point& b, const landmark_point& c);
/// The point whose distances from all points have about the least sum, found from `start`: it is
/// never farther from that than `start` is. None of the points may be missing; there is at least
/// one.
landmark_point geometric_median(std::span<const landmark_point> points, const landmark_point& start,
                                int most_steps = 200);

}  // namespace zeb
