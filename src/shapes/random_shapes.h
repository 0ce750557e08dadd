// Shapes of trees that random models make, to hold those of real trees against.
#pragma once

#include <vector>

#include "base/random.h"
#include "shapes/shape_indices.h"

namespace zeb {

/// Binary trees. Yule: each terminal splits with the same chance. Proportional: each labelled tree
/// has the same chance.
enum class shape_model { yule, proportional };
/// A record of 2n - 1 cells; n is at least 2.
std::vector<tree_node> random_shape(shape_model model, int n, random_generator& generator);

/// The indices of many random trees of n terminals, each list in increasing order.
struct shape_sample {
  std::array<std::vector<double>, shape_index_count> values;

  double mean(std::size_t index) const;
  double deviation(std::size_t index) const;
  /// Shares of the sample at most, and at least, as large.
  double share_below(std::size_t index, double value) const;
  double share_above(std::size_t index, double value) const;
};
shape_sample sample_shapes(shape_model model, int n, int size, random_generator& generator);

}  // namespace zeb
