// Motions of configurations: turned, scaled, shifted.
#pragma once

#include <array>
#include <span>

#include "matrix/landmarks.h"

namespace zeb {

/// Takes a point p to scale * turn * p + shift. In two dimensions z isn't touched.
struct similarity {
  std::array<std::array<double, 3>, 3> turn = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  double scale = 1;
  landmark_point shift;

  landmark_point moved(const landmark_point& p) const {
    const auto along = [&](const std::array<double, 3>& row) {
      return scale * (row[0] * p.x + row[1] * p.y + row[2] * p.z);
    };
    return {along(turn[0]) + shift.x, along(turn[1]) + shift.y, along(turn[2]) + shift.z};
  }
};

/// Moves all points that aren't missing.
void move_points(std::span<landmark_point> points, const similarity& motion);
/// Turn in the plane by an angle with this cosine and sine.
std::array<std::array<double, 3>, 3> turn_in_plane(double cosine, double sine);
/// Turn of a unit quaternion (w, x, y, z).
std::array<std::array<double, 3>, 3> turn_of_quaternion(const std::array<double, 4>& q);
/// The motion with this turn and scale that takes `from` to `to`.
similarity motion_about(const similarity& turned, const landmark_point& from,
                        const landmark_point& to);

inline landmark_point difference(const landmark_point& a, const landmark_point& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline double dot_product(const landmark_point& a, const landmark_point& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
double distance_of(const landmark_point& a, const landmark_point& b);

}  // namespace zeb
