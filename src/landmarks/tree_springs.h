// All nodes of a tree moved at once towards the least total length.
#pragma once

#include <span>
#include <vector>

#include "landmarks/landmark_tree.h"

namespace zeb {

/// One sweep: each branch pulls by the inverse of its length, softened by `softness` (in units of
/// the data) so that branches of no length don't tear at nodes that coincide; positions go where
/// all pulls balance. It never lengthens the tree by softened lengths. Vertices that are terminals
/// stay.
class tree_springs {
 public:
  void sweep(const point_tree& tree, int terminals, double softness,
             std::span<landmark_point> positions);

 private:
  // By vertex: how strongly the terminals above it in the order of the sweep hold it, and where.
  std::vector<double> hold_;
  std::vector<landmark_point> held_at_;
  std::vector<double> strength_;  // of the branch to the ancestor
};

}  // namespace zeb
