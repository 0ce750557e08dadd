#include "macro/scaling.h"

#include <cmath>

#include "base/random.h"

namespace zeb {

namespace {

constexpr int most_iterations = 1000;
constexpr double least_gain =
    1e-10;  // relative improvement of the stress below which it has converged

double point_distance(const std::vector<double>& x, std::size_t n, std::size_t dims, std::size_t i,
                      std::size_t j) {
  double sum = 0;
  for (std::size_t d = 0; d < dims; ++d) {
    const double difference = x[d * n + i] - x[d * n + j];
    sum += difference * difference;
  }
  return std::sqrt(sum);
}

double stress_of(const std::vector<double>& x, std::span<const double> distances,
                 std::span<const double> weights, std::size_t n, std::size_t dims) {
  double sum = 0;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const double off = distances[i * n + j] - point_distance(x, n, dims, i, j);
      sum += weights[i * n + j] * off * off;
    }
  }
  return sum;
}

// One step of the majorisation, one point at a time: each point moves to the weighted mean of where
// the others would have it. Never raises the stress, and needs no inverse of the weight matrix.
void improve(std::vector<double>& x, std::span<const double> distances,
             std::span<const double> weights, std::size_t n, std::size_t dims) {
  std::vector<double> sum(dims);
  for (std::size_t i = 0; i < n; ++i) {
    sum.assign(dims, 0.0);
    double total = 0;
    for (std::size_t j = 0; j < n; ++j) {
      const double w = weights[i * n + j];
      if (j == i || !(w > 0)) continue;
      const double now = point_distance(x, n, dims, i, j);
      const double ratio = now > 1e-12 ? distances[i * n + j] / now : 0;
      for (std::size_t d = 0; d < dims; ++d) {
        sum[d] += w * (x[d * n + j] + ratio * (x[d * n + i] - x[d * n + j]));
      }
      total += w;
    }
    if (!(total > 0)) continue;
    for (std::size_t d = 0; d < dims; ++d) x[d * n + i] = sum[d] / total;
  }
}

}  // namespace

double correlation(std::span<const double> x, std::span<const double> y) {
  const auto n = static_cast<double>(x.size());
  if (x.empty()) return 0;
  double mean_x = 0;
  double mean_y = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    mean_x += x[i] / n;
    mean_y += y[i] / n;
  }
  double xx = 0;
  double yy = 0;
  double xy = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    xx += (x[i] - mean_x) * (x[i] - mean_x);
    yy += (y[i] - mean_y) * (y[i] - mean_y);
    xy += (x[i] - mean_x) * (y[i] - mean_y);
  }
  return xx > 0 && yy > 0 ? xy / std::sqrt(xx * yy) : 0;
}

scaling_result scale_by_smacof(std::span<const double> distances, std::span<const double> weights,
                               std::size_t n, std::size_t dims) {
  constexpr int starts =
      8;  // the stress has local minima: the best of several fixed starts is taken
  double scale = 0;
  for (const double d : distances) scale = d > scale ? d : scale;
  if (!(scale > 0)) scale = 1;
  scaling_result best;
  best.stress = INFINITY;
  random_generator generator(1);
  for (int start = 0; start < starts; ++start) {
    std::vector<double> x(n * dims);
    for (double& value : x) value = scale * generator.draw() / random_generator::largest;
    double stress = stress_of(x, distances, weights, n, dims);
    for (int i = 0; i < most_iterations && stress > 0; ++i) {
      improve(x, distances, weights, n, dims);
      const double now = stress_of(x, distances, weights, n, dims);
      const bool converged = stress - now < least_gain * stress;
      stress = now;
      if (converged) break;
    }
    if (stress < best.stress) {
      best.stress = stress;
      best.coordinates = std::move(x);
    }
  }
  std::vector<double> given;
  std::vector<double> reached;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      given.push_back(distances[i * n + j]);
      reached.push_back(point_distance(best.coordinates, n, dims, i, j));
    }
  }
  best.correlation = correlation(given, reached);
  return best;
}

}  // namespace zeb
