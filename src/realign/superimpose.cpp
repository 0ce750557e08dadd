#include "realign/superimpose.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "base/indices.h"

namespace zeb {
namespace {

using turn_matrix = std::array<std::array<double, 3>, 3>;

double weight_of(const matched_points& points, std::size_t i) {
  return points.weights.empty() ? 1 : points.weights[i];
}

landmark_point centre(std::span<const landmark_point> points, const matched_points& weighted) {
  landmark_point sum;
  double total = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const double w = weight_of(weighted, i);
    sum = {sum.x + w * points[i].x, sum.y + w * points[i].y, sum.z + w * points[i].z};
    total += w;
  }
  if (total <= 0) return points.empty() ? landmark_point{} : points[0];
  return {sum.x / total, sum.y / total, sum.z / total};
}

/// Sums of the products of target (row) and reference (column) about their centres.
turn_matrix products(const matched_points& points, const landmark_point& target_centre,
                     const landmark_point& reference_centre) {
  turn_matrix sums{};
  for (std::size_t i = 0; i < points.target.size(); ++i) {
    const landmark_point p = difference(points.target[i], target_centre);
    const landmark_point q = difference(points.reference[i], reference_centre);
    const double w = weight_of(points, i);
    const std::array a = {p.x, p.y, p.z};
    const std::array b = {q.x, q.y, q.z};
    for (std::size_t row = 0; row < 3; ++row)
      for (std::size_t column = 0; column < 3; ++column)
        sums[row][column] += w * a[row] * b[column];
  }
  return sums;
}

turn_matrix best_turn_in_plane(const turn_matrix& m) {
  const double along = m[0][0] + m[1][1];
  const double across = m[0][1] - m[1][0];
  const double length = std::hypot(along, across);
  return length > 0 ? turn_in_plane(along / length, across / length) : turn_in_plane(1, 0);
}

using square4 = std::array<std::array<double, 4>, 4>;

/// One rotation of Jacobi's method: makes entry (p, q) of the symmetric matrix 0.
void jacobi_rotation(square4& m, square4& vectors, std::size_t p, std::size_t q) {
  if (m[p][q] == 0) return;
  const double theta = (m[q][q] - m[p][p]) / (2 * m[p][q]);
  const double t = std::copysign(1, theta) / (std::abs(theta) + std::hypot(theta, 1.0));
  const double c = 1 / std::hypot(t, 1.0);
  const double s = t * c;
  for (std::size_t k = 0; k < 4; ++k) {
    const double a = m[k][p];
    m[k][p] = c * a - s * m[k][q];
    m[k][q] = s * a + c * m[k][q];
  }
  for (std::size_t k = 0; k < 4; ++k) {
    const double a = m[p][k];
    m[p][k] = c * a - s * m[q][k];
    m[q][k] = s * a + c * m[q][k];
    const double v = vectors[k][p];
    vectors[k][p] = c * v - s * vectors[k][q];
    vectors[k][q] = s * v + c * vectors[k][q];
  }
}

// The unit quaternion of the best turn is the eigenvector of the largest eigenvalue of a symmetric
// matrix of the products.
turn_matrix best_turn_in_space(const turn_matrix& s) {
  square4 m = {
      {{s[0][0] + s[1][1] + s[2][2], s[1][2] - s[2][1], s[2][0] - s[0][2], s[0][1] - s[1][0]},
       {s[1][2] - s[2][1], s[0][0] - s[1][1] - s[2][2], s[0][1] + s[1][0], s[2][0] + s[0][2]},
       {s[2][0] - s[0][2], s[0][1] + s[1][0], s[1][1] - s[0][0] - s[2][2], s[1][2] + s[2][1]},
       {s[0][1] - s[1][0], s[2][0] + s[0][2], s[1][2] + s[2][1], s[2][2] - s[0][0] - s[1][1]}}};
  square4 vectors = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
  constexpr int sweeps = 12;  // far beyond what the quadratic convergence needs
  for (int sweep = 0; sweep < sweeps; ++sweep)
    for (std::size_t p = 0; p < 3; ++p)
      for (std::size_t q = p + 1; q < 4; ++q) jacobi_rotation(m, vectors, p, q);
  std::size_t best = 0;
  for (std::size_t i = 1; i < 4; ++i)
    if (m[i][i] > m[best][best]) best = i;
  std::array<double, 4> quaternion;
  double square = 0;
  for (std::size_t k = 0; k < 4; ++k) square += vectors[k][best] * vectors[k][best];
  for (std::size_t k = 0; k < 4; ++k) quaternion[k] = vectors[k][best] / std::sqrt(square);
  return turn_of_quaternion(quaternion);
}

double best_scale(const matched_points& points, const turn_matrix& turn, const turn_matrix& m,
                  const landmark_point& target_centre) {
  double along = 0;
  for (std::size_t row = 0; row < 3; ++row)
    for (std::size_t column = 0; column < 3; ++column) along += turn[row][column] * m[column][row];
  double square = 0;
  for (std::size_t i = 0; i < points.target.size(); ++i) {
    const landmark_point p = difference(points.target[i], target_centre);
    square += weight_of(points, i) * dot_product(p, p);
  }
  return square > 0 && along > 0 ? along / square : 1;
}

double largest_extent(const matched_points& points) {
  double largest = 0;
  for (const auto list : {points.reference, points.target})
    for (const landmark_point& p : list) largest = std::max(largest, distance_of(p, list[0]));
  return largest;
}

// The least sum of distances by least squares whose weights follow the distances (Weiszfeld 1937):
// each round, a point's weight is divided by its distance, kept from 0 by a softening that shrinks.
// Each round lowers the softened sum.
class linear_fitter {
 public:
  linear_fitter(const matched_points& points, const superposition_rules& rules)
      : points_(points), rules_(rules), extent_(largest_extent(points)) {
    divided_.resize(points.target.size());
  }

  double extent() const { return extent_; }

  /// Rounds from `motion` on, until they gain nothing, with softenings from `first` to `last`,
  /// parts of the extent.
  similarity follow(similarity motion, double first, double last, int rounds) {
    for (double part = first; part >= last; part /= 10) {
      double former = softened_sum(motion, part * extent_);
      for (int round = 0; round < rounds; ++round) {
        const similarity next = one_round(motion, part * extent_);
        const double sum = softened_sum(next, part * extent_);
        if (!(sum < former)) break;
        motion = next;
        const bool ended = former - sum < former * 1e-15;
        former = sum;
        if (ended) break;
      }
    }
    return motion;
  }

 private:
  double softened(std::size_t i, const similarity& motion, double softening) const {
    return std::hypot(distance_of(motion.moved(points_.target[i]), points_.reference[i]),
                      softening);
  }
  double softened_sum(const similarity& motion, double softening) const {
    double sum = 0;
    for (std::size_t i = 0; i < divided_.size(); ++i)
      sum += weight_of(points_, i) * softened(i, motion, softening);
    return sum;
  }
  similarity one_round(const similarity& motion, double softening) {
    for (std::size_t i = 0; i < divided_.size(); ++i)
      divided_[i] = weight_of(points_, i) / softened(i, motion, softening);
    return least_squares_motion({points_.dimensions, points_.reference, points_.target, divided_},
                                rules_);
  }

  const matched_points& points_;
  superposition_rules rules_;
  double extent_;
  std::vector<double> divided_;
};

/// Turns all around: the sum of distances may have several minima.
std::vector<turn_matrix> turns_to_try(int dimensions) {
  std::vector<turn_matrix> turns;
  if (dimensions == 2) {
    constexpr int steps = 16;
    for (int i = 0; i < steps; ++i) {
      const double angle = 2 * std::numbers::pi * i / steps;
      turns.push_back(turn_in_plane(std::cos(angle), std::sin(angle)));
    }
    return turns;
  }
  // The quaternions with coordinates -1, 0 and 1, as unit vectors: 40 turns.
  for (int code = 0; code < 81; ++code) {
    const std::array<double, 4> q = {code / 27 - 1.0, code / 9 % 3 - 1.0, code / 3 % 3 - 1.0,
                                     code % 3 - 1.0};
    const auto first = std::ranges::find_if(q, [](double v) { return v != 0; });
    if (first == q.end() || *first < 0) continue;  // -q is the same turn
    const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
    turns.push_back(
        turn_of_quaternion({q[0] / length, q[1] / length, q[2] / length, q[3] / length}));
  }
  return turns;
}

std::vector<similarity> starts(const matched_points& points, const superposition_rules& rules) {
  const similarity squares = least_squares_motion(points, rules);
  std::vector<similarity> all = {squares};
  if (!rules.turns) return all;
  const landmark_point from = centre(points.target, points);
  const landmark_point to = centre(points.reference, points);
  for (const turn_matrix& turn : turns_to_try(points.dimensions)) {
    similarity start = squares;
    start.turn = turn;
    all.push_back(motion_about(start, from, to));
  }
  return all;
}

}  // namespace

double sum_of_distances(const matched_points& points, const similarity& motion) {
  double sum = 0;
  for (std::size_t i = 0; i < points.target.size(); ++i) {
    const landmark_point moved = motion.moved(points.target[i]);
    sum += weight_of(points, i) * distance_of(moved, points.reference[i]);
  }
  return sum;
}

similarity least_squares_motion(const matched_points& points, const superposition_rules& rules) {
  const landmark_point from = centre(points.target, points);
  const landmark_point to = centre(points.reference, points);
  const turn_matrix m = products(points, from, to);
  similarity motion;
  if (rules.turns)
    motion.turn = points.dimensions == 2 ? best_turn_in_plane(m) : best_turn_in_space(m);
  if (rules.scales) motion.scale = best_scale(points, motion.turn, m, from);
  return motion_about(motion, from, to);
}

similarity superimpose(const matched_points& points, const superposition_rules& rules) {
  const similarity unmoved;
  const double as_it_lies = sum_of_distances(points, unmoved);
  linear_fitter fitter(points, rules);
  const double rounding = fitter.extent() * 1e-13;
  if (as_it_lies <= rounding) return unmoved;

  // Roughly from all starts, then the best ones to the end.
  std::vector<std::pair<double, similarity>> rough;
  for (const similarity& start : starts(points, rules)) {
    const similarity motion = fitter.follow(start, 1e-2, 1e-3, 15);
    rough.emplace_back(sum_of_distances(points, motion), motion);
  }
  std::ranges::stable_sort(rough, {}, &std::pair<double, similarity>::first);
  constexpr std::size_t refined = 4;
  similarity best = unmoved;
  double least = as_it_lies;
  for (std::size_t i = 0; i < std::min(refined, rough.size()); ++i) {
    const similarity motion = fitter.follow(rough[i].second, 1e-2, 1e-13, 200);
    const double sum = sum_of_distances(points, motion);
    if (sum < least) {
      least = sum;
      best = motion;
    }
  }
  // No motion for a gain within rounding.
  return as_it_lies - least > as_it_lies * 1e-12 ? best : unmoved;
}

}  // namespace zeb
