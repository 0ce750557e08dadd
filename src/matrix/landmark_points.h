// What the matrix holds of landmark characters.
#pragma once

#include <vector>

namespace zeb {

struct landmark_point {
  double x = 0;
  double y = 0;
  double z = 0;  // 0 in two dimensions
  bool operator==(const landmark_point&) const = default;
};
/// A taxon that lacks a point has these coordinates; anything below `least_coordinate` is missing.
constexpr landmark_point missing_point = {-1000001, -1000001, -1000001};
constexpr double least_coordinate = -1000000;
inline bool is_missing(const landmark_point& point) { return point.x < least_coordinate; }

/// One character: the same points in the same order for every taxon.
struct landmark_configuration {
  int character = 0;
  int dimensions = 2;                       // 2 or 3
  int points = 0;                           // 0: no taxon has been read that shows it
  std::vector<landmark_point> coordinates;  // by taxon, then by point: ntax * points
};

}  // namespace zeb
