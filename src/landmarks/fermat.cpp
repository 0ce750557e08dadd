#include "landmarks/fermat.h"

#include <algorithm>
#include <cmath>

namespace zeb {
namespace {

const double root_of_three = std::sqrt(3.0);

landmark_point difference(const landmark_point& a, const landmark_point& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
double dot(const landmark_point& a, const landmark_point& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
landmark_point combination(const landmark_point& a, double f, const landmark_point& b, double g) {
  return {a.x * f + b.x * g, a.y * f + b.y * g, a.z * f + b.z * g};
}
double norm(const landmark_point& a) { return std::sqrt(dot(a, a)); }

/// Twice the area of the triangle that two sides span.
double doubled_area(const landmark_point& u, const landmark_point& v) {
  return norm({u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x});
}

/// Is the angle between two sides 120 degrees or more, to rounding? `product`: their scalar
/// product.
bool is_wide(double product, double squared_u, double squared_v) {
  constexpr double rounding = 1 - 1e-14;
  return product < 0 && 4 * product * product >= squared_u * squared_v * rounding;
}

/// The sides of a triangle, from one corner to another, and what its angles go by.
struct triangle {
  landmark_point ab, ac;
  double at_a, at_b, at_c;  // scalar products of the sides that meet there
  double ab2, ac2, bc2;     // squared lengths

  triangle(const landmark_point& a, const landmark_point& b, const landmark_point& c)
      : ab(difference(b, a)),
        ac(difference(c, a)),
        at_a(dot(ab, ac)),
        ab2(dot(ab, ab)),
        ac2(dot(ac, ac)) {
    const landmark_point bc = difference(c, b);
    bc2 = dot(bc, bc);
    at_b = -dot(ab, bc);
    at_c = dot(ac, bc);
  }
  /// The corner that is the Fermat point: 0 to 2; -1 where it lies within. Two that coincide are
  /// such a corner.
  int corner() const {
    if (ab2 == 0 || ac2 == 0 || is_wide(at_a, ab2, ac2)) return 0;
    if (bc2 == 0 || is_wide(at_b, ab2, bc2)) return 1;
    return is_wide(at_c, ac2, bc2) ? 2 : -1;
  }
};

}  // namespace

// The barycentric weight of a corner is the inverse of the length of one side there, times that of
// the other, times the sine of their angle + 60 degrees: twice the area and a scalar product tell
// it, in the plane or in space.
landmark_point fermat_point(const landmark_point& a, const landmark_point& b,
                            const landmark_point& c) {
  const triangle t(a, b, c);
  const int corner = t.corner();
  if (corner >= 0) return corner == 0 ? a : corner == 1 ? b : c;
  const double area = doubled_area(t.ab, t.ac);
  const double sa = area + root_of_three * t.at_a;
  const double sb = area + root_of_three * t.at_b;
  const double sc = area + root_of_three * t.at_c;
  const double sum = sb * sc + sa * sc + sa * sb;
  if (!(sum > 0)) return a;
  const landmark_point way = combination(t.ab, sa * sc / sum, t.ac, sa * sb / sum);
  return {a.x + way.x, a.y + way.y, a.z + way.z};
}

double fermat_distance(const landmark_point& a, const landmark_point& b, const landmark_point& c) {
  const triangle t(a, b, c);
  switch (t.corner()) {
    case 0:
      return std::sqrt(t.ab2) + std::sqrt(t.ac2);
    case 1:
      return std::sqrt(t.ab2) + std::sqrt(t.bc2);
    case 2:
      return std::sqrt(t.ac2) + std::sqrt(t.bc2);
    default:
      return std::sqrt((t.ab2 + t.ac2 + t.bc2) / 2 + root_of_three * doubled_area(t.ab, t.ac));
  }
}

// Iterated weighted means (Weiszfeld 1937). Where a step comes upon one of the points, the pull of
// the others tells whether it is the median, or how far to go on from it.
landmark_point geometric_median(std::span<const landmark_point> points, const landmark_point& start,
                                int most_steps) {
  landmark_point at = start;
  double spread = 0;
  for (const landmark_point& p : points) spread = std::max(spread, distance(p, points.front()));
  for (int step = 0; step < most_steps; ++step) {
    landmark_point mean;
    landmark_point pull;
    double weights = 0;
    int here = 0;
    for (const landmark_point& p : points) {
      const landmark_point way = difference(p, at);
      const double length = norm(way);
      if (length <= 1e-12 * spread) {
        ++here;
        continue;
      }
      mean = combination(mean, 1, p, 1 / length);
      pull = combination(pull, 1, way, 1 / length);
      weights += 1 / length;
    }
    if (weights == 0 || norm(pull) <= here) return at;
    const double stay = here / norm(pull);
    const landmark_point next = combination(mean, (1 - stay) / weights, at, stay);
    const double moved = distance(next, at);
    at = next;
    if (moved <= 1e-9 * spread) break;
  }
  return at;
}

}  // namespace zeb
