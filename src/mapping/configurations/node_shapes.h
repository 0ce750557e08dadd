// The configurations of all nodes of a tree, as their points are optimised.
#pragma once

#include <vector>

#include "mapping/tree_shape.h"
#include "matrix/landmark_points.h"

namespace zeb {

struct node_shapes {
  int character = 0;
  int dimensions = 2;
  std::vector<std::vector<landmark_point>>
      shapes;                   // by node, then landmark; empty: not in the tree
  std::vector<double> changes;  // by node: how far all its points moved since its ancestor, in sum
  double length() const;        // of the tree: the sum of the changes
};
/// Error for a tree without a basal dichotomy.
node_shapes shapes_on_tree(const tree_shape& tree, int character);

/// The sum of the distances between points that both have.
double distance_of_shapes(const std::vector<landmark_point>& a,
                          const std::vector<landmark_point>& b);

}  // namespace zeb
