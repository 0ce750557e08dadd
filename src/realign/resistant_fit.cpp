#include "realign/resistant_fit.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "base/indices.h"

namespace zeb {
namespace {

double median(std::vector<double> values) {
  std::ranges::sort(values);
  const std::size_t half = values.size() / 2;
  return values.size() % 2 ? values[half] : (values[half - 1] + values[half]) / 2;
}

/// Between -pi and pi.
double wrapped(double angle) { return std::remainder(angle, 2 * std::numbers::pi); }

// Angles have no order on the circle, but they have one about their mean direction, cut opposite
// of it.
double median_angle(const std::vector<double>& angles) {
  double cosines = 0;
  double sines = 0;
  for (const double angle : angles) {
    cosines += std::cos(angle);
    sines += std::sin(angle);
  }
  const double mean = std::atan2(sines, cosines);
  std::vector<double> about_mean;
  for (const double angle : angles) about_mean.push_back(wrapped(angle - mean));
  return mean + median(about_mean);
}

using point_list = std::span<const landmark_point>;

/// Median over i of the median over j of what a pair of points says; pairs that coincide in either
/// list say nothing. `none` where no pair says anything.
template <class measure, class middle>
double repeated_median(point_list reference, point_list target, measure says, middle median_of,
                       double none) {
  std::vector<double> of_points;
  for (std::size_t i = 0; i < target.size(); ++i) {
    std::vector<double> of_pairs;
    for (std::size_t j = 0; j < target.size(); ++j) {
      if (j == i) continue;
      const landmark_point p = difference(target[j], target[i]);
      const landmark_point q = difference(reference[j], reference[i]);
      if (dot_product(p, p) > 0 && dot_product(q, q) > 0) of_pairs.push_back(says(p, q));
    }
    if (!of_pairs.empty()) of_points.push_back(median_of(of_pairs));
  }
  return of_points.empty() ? none : median_of(of_points);
}

double turn_between(const landmark_point& from, const landmark_point& to) {
  return wrapped(std::atan2(to.y, to.x) - std::atan2(from.y, from.x));
}
double ratio_of_lengths(const landmark_point& from, const landmark_point& to) {
  return std::sqrt(dot_product(to, to) / dot_product(from, from));
}

double median_shift(point_list reference, point_list target, const similarity& motion,
                    double landmark_point::*axis) {
  std::vector<double> shifts;
  for (std::size_t i = 0; i < target.size(); ++i)
    shifts.push_back(reference[i].*axis - motion.moved(target[i]).*axis);
  return median(shifts);
}

}  // namespace

similarity resistant_motion(point_list reference, point_list target, bool scales) {
  similarity motion;
  if (target.empty()) return motion;
  if (scales) motion.scale = repeated_median(reference, target, ratio_of_lengths, median, 1.0);
  const double turn = repeated_median(reference, target, turn_between, median_angle, 0.0);
  if (turn != 0) motion.turn = turn_in_plane(std::cos(turn), std::sin(turn));
  const similarity turned = motion;
  motion.shift = {median_shift(reference, target, turned, &landmark_point::x),
                  median_shift(reference, target, turned, &landmark_point::y), 0};
  return motion;
}

}  // namespace zeb
