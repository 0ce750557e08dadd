#include "mapping/configurations/landmark_view.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "matrix/landmarks.h"

namespace zeb {

namespace {

double radians(double degrees) { return degrees * std::numbers::pi / 180; }

/// Turned about the upright axis, then tilted: x to the right, y upwards, z to the viewer.
landmark_point turned(const landmark_point& p, int dimensions) {
  if (dimensions == 2) return p;
  const double a = radians(lmark.settings.rotation);
  const double b = radians(lmark.settings.tilt);
  const double x = p.x * std::cos(a) + p.z * std::sin(a);
  const double z = p.z * std::cos(a) - p.x * std::sin(a);
  return {x, p.y * std::cos(b) - z * std::sin(b), p.y * std::sin(b) + z * std::cos(b)};
}

struct limits {
  double low = std::numeric_limits<double>::max();
  double high = std::numeric_limits<double>::lowest();
  void take(double value) {
    low = std::min(low, value);
    high = std::max(high, value);
  }
  double part(double value) const { return high > low ? (value - low) / (high - low) : 0.5; }
  double middle() const { return (low + high) / 2; }
};

}  // namespace

std::span<const landmark_wire> wires_of(int character) {
  const auto all = landmark_configurations();
  for (std::size_t i = 0; i < all.size() && i < lmark.wires.size(); ++i)
    if (all[i].character == character) return lmark.wires[i];
  return {};
}

seen_shapes::seen_shapes(int dimensions, const std::vector<std::vector<landmark_point>>& shapes) {
  limits x, y, z;
  for (const auto& shape : shapes) {
    shapes_.emplace_back();
    for (const landmark_point& point : shape) {
      shapes_.back().push_back({0, 0, 0, is_missing(point)});
      if (is_missing(point)) continue;
      const landmark_point p = turned(point, dimensions);
      shapes_.back().back() = {p.x, p.y, p.z, false};
      x.take(p.x);
      y.take(p.y);
      z.take(p.z);
    }
  }
  // Lines of sight that meet: what is nearer is larger.
  const double depth = dimensions == 3 ? lmark.settings.volume / 100.0 : 0;
  limits seen_x, seen_y;
  for (seen_shape& shape : shapes_)
    for (seen_point& p : shape) {
      if (p.missing) continue;
      p.nearness = z.part(p.nearness);
      const double larger = 1 + depth * 0.5 * (p.nearness - 0.5);
      p.x = x.middle() + (p.x - x.middle()) * larger;
      p.y = y.middle() + (p.y - y.middle()) * larger;
      seen_x.take(p.x);
      seen_y.take(p.y);
    }
  if (seen_x.low > seen_x.high) return;
  left_ = seen_x.low;
  right_ = seen_x.high;
  bottom_ = seen_y.low;
  top_ = seen_y.high;
}

}  // namespace zeb
