#include "landmarks/point_minima.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "base/indices.h"
#include "base/interrupts.h"
#include "landmarks/fermat.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"

namespace zeb {
std::vector<landmark_point> distinct_points(std::span<const landmark_point> points) {
  std::vector<landmark_point> found;
  std::ranges::copy_if(points, std::back_inserter(found),
                       [](const landmark_point& p) { return !is_missing(p); });
  const auto order = [](const landmark_point& a, const landmark_point& b) {
    return std::array{a.x, a.y, a.z} < std::array{b.x, b.y, b.z};
  };
  std::ranges::sort(found, order);
  found.erase(std::unique(found.begin(), found.end()), found.end());
  return found;
}

// The sum is at most 1.7320508 times the longest side, so that most pairs can't be the longest side
// of a better triplet.
double largest_triplet(std::span<const landmark_point> terminals) {
  const double most_by_side = std::sqrt(3.0);
  const std::vector<landmark_point> points = distinct_points(terminals);
  double best = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) best = std::max(best, distance(points[i], points[j]));
  }
  for (std::size_t i = 0; i < points.size(); ++i) {
    check_interrupt();
    for (std::size_t j = 0; j < i; ++j) {
      const double side = distance(points[i], points[j]);
      if (side * most_by_side <= best) continue;
      for (std::size_t k = 0; k < points.size(); ++k) {
        const double second = distance(points[i], points[k]);
        const double third = distance(points[j], points[k]);
        if (second > side || third > side || side + std::min(second, third) <= best) continue;
        best = std::max(best, fermat_distance(points[i], points[j], points[k]));
      }
    }
  }
  return best;
}

double minimum_of_point(const point_record& point) {
  if (point.chosen_minimum >= 0) return point.chosen_minimum;
  return largest_triplet(point.counted);
}

double length_of_star(std::span<const landmark_point> terminals) {
  std::vector<landmark_point> present;
  std::ranges::copy_if(terminals, std::back_inserter(present),
                       [](const landmark_point& p) { return !is_missing(p); });
  if (present.empty()) return 0;
  landmark_point mean;
  for (const landmark_point& p : present) mean = {mean.x + p.x, mean.y + p.y, mean.z + p.z};
  const auto n = static_cast<double>(present.size());
  const landmark_point median = geometric_median(present, {mean.x / n, mean.y / n, mean.z / n});
  double sum = 0;
  for (const landmark_point& p : present) sum += distance(p, median);
  return sum;
}

length_range range_of_configuration(int character, std::span<const std::uint8_t> taxa) {
  std::vector<std::uint8_t> one(at(matrix.nchar), 0);
  one[at(character)] = 1;
  length_range range;
  for (const point_record& point : gather_points(one, {}, taxa).points) {
    range.least += point.multiplier() * minimum_of_point(point);
    range.most += point.multiplier() * length_of_star(point.counted);
  }
  range.least = std::min(range.least, range.most);
  return range;
}

}  // namespace zeb
