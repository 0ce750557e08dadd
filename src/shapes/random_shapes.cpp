#include "shapes/random_shapes.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "base/indices.h"
#include "base/interrupts.h"

namespace zeb {
namespace {

// Values that should be the same may differ in their last digits.
constexpr double tolerance = 1e-9;

}  // namespace

// A terminal joins the branch of an earlier terminal (Yule: as if that had split) or any branch.
// The branch of the root's own, 2k - 1 branches in all with k terminals, is one of them.
std::vector<tree_node> random_shape(shape_model model, int n, random_generator& generator) {
  std::vector<int> up(at(2 * n), -1);  // terminals, then internal nodes in the order of joining
  for (int k = 1; k < n; ++k) {
    const int choices = model == shape_model::yule ? k : 2 * k - 1;
    const int choice = generator.draw() % choices;
    const int target = choice < k ? choice : n + choice - k;
    const int joint = n + k - 1;
    up[at(joint)] = up[at(target)];
    up[at(target)] = joint;
    up[at(k)] = joint;
  }
  std::vector<tree_node> tree(at(2 * n - 1), 0);
  record_from_ancestors(up, tree, n);
  return tree;
}

double shape_sample::mean(std::size_t index) const {
  const std::vector<double>& own = values[index];
  return std::accumulate(own.begin(), own.end(), 0.0) / static_cast<double>(own.size());
}

double shape_sample::deviation(std::size_t index) const {
  const double middle = mean(index);
  double sum = 0;
  for (const double v : values[index]) sum += (v - middle) * (v - middle);
  return std::sqrt(sum / static_cast<double>(std::max<std::size_t>(values[index].size(), 2) - 1));
}

double shape_sample::share_below(std::size_t index, double value) const {
  const std::vector<double>& own = values[index];
  const auto found = std::ranges::upper_bound(own, value + tolerance) - own.begin();
  return static_cast<double>(found) / static_cast<double>(own.size());
}

double shape_sample::share_above(std::size_t index, double value) const {
  const std::vector<double>& own = values[index];
  const auto found = own.end() - std::ranges::lower_bound(own, value - tolerance);
  return static_cast<double>(found) / static_cast<double>(own.size());
}

shape_sample sample_shapes(shape_model model, int n, int size, random_generator& generator) {
  shape_sample sample;
  for (int i = 0; i < size; ++i) {
    check_interrupt();
    const shape_values values = indices_of(random_shape(model, n, generator), n);
    for (std::size_t k = 0; k < shape_index_count; ++k) sample.values[k].push_back(*values[k]);
  }
  for (std::vector<double>& own : sample.values) std::ranges::sort(own);
  return sample;
}

}  // namespace zeb
