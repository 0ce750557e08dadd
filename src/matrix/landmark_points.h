// What the matrix holds of landmark characters.
#pragma once

#include <cstddef>
#include <span>
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

/// Is there no point at all, as in a taxon that lacks a configuration?
bool all_missing(std::span<const landmark_point> points);

/// One character: the same points in the same order for every taxon.
struct landmark_configuration {
  int character = 0;
  int dimensions = 2;                       // 2 or 3
  int points = 0;                           // 0: no taxon has been read that shows it
  std::vector<landmark_point> coordinates;  // by taxon, then by point: ntax * points
};

/// Among configurations in the order of characters: that of one, or null.
const landmark_configuration* find_configuration(std::span<const landmark_configuration> all,
                                                 int character);
/// The points of a taxon.
inline std::span<const landmark_point> points_of(const landmark_configuration& configuration,
                                                 int taxon) {
  const auto points = static_cast<std::size_t>(configuration.points);
  return std::span(configuration.coordinates)
      .subspan(static_cast<std::size_t>(taxon) * points, points);
}

}  // namespace zeb
