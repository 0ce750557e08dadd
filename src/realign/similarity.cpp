#include "realign/similarity.h"

#include <cmath>

namespace zeb {

void move_points(std::span<landmark_point> points, const similarity& motion) {
  for (landmark_point& point : points)
    if (!is_missing(point)) point = motion.moved(point);
}

std::array<std::array<double, 3>, 3> turn_in_plane(double cosine, double sine) {
  return {{{cosine, -sine, 0}, {sine, cosine, 0}, {0, 0, 1}}};
}

std::array<std::array<double, 3>, 3> turn_of_quaternion(const std::array<double, 4>& q) {
  const auto [w, x, y, z] = q;
  return {{{w * w + x * x - y * y - z * z, 2 * (x * y - w * z), 2 * (x * z + w * y)},
           {2 * (x * y + w * z), w * w - x * x + y * y - z * z, 2 * (y * z - w * x)},
           {2 * (x * z - w * y), 2 * (y * z + w * x), w * w - x * x - y * y + z * z}}};
}

similarity motion_about(const similarity& turned, const landmark_point& from,
                        const landmark_point& to) {
  similarity motion = turned;
  motion.shift = {};
  motion.shift = difference(to, motion.moved(from));
  return motion;
}

double distance_of(const landmark_point& a, const landmark_point& b) {
  return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

}  // namespace zeb
