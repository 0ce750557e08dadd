// One point on one tree: positions of all nodes for which the branches have the least total length.
//
// That is a Steiner problem on a given tree. It is convex, but its derivative jumps where nodes
// coincide, and passes that move one node at a time stop there. First every node is placed on a
// grid by dynamic programming (Sankoff 1975), then on finer grids around what was found. Then all
// nodes move together: each branch is a spring whose strength is the inverse of its length, so that
// one sweep over the tree finds where they come to rest, and lengths are softened less and less.
// Fermat points, node by node, end it.
#pragma once

#include <span>
#include <vector>

#include "landmarks/grid_passes.h"
#include "landmarks/landmark_settings.h"
#include "landmarks/landmark_tree.h"
#include "landmarks/point_records.h"
#include "landmarks/tree_springs.h"

namespace zeb {

/// Owns all that it works on, so that each thread can have one. Results don't depend on what was
/// optimised before.
class point_optimiser {
 public:
  /// The settings must outlive it.
  explicit point_optimiser(const landmark_settings& settings) : settings_(settings) {}

  /// By all means that are set; returns the total length. Times `multiplier()` it is the score.
  double optimise(const landmark_tree& tree, const point_record& point);
  /// From positions of nodes that are known (by node of the tree; those that are missing get the
  /// position of a terminal): no grids. Faster, and as good, since there are no local optima.
  double improve(const landmark_tree& tree, const point_record& point,
                 std::span<const landmark_point> start);

  /// Of the last point, by node of the whole tree: missing where no terminal below has it.
  std::span<const landmark_point> positions() const { return positions_; }

 private:
  bool begin(const landmark_tree& tree, const point_record& point);
  void place_on_grids(const point_record& point, int terminals);
  void shake(const point_record& point, int terminals, landmark_draws& draws, point_grid& grid);
  void move_to_optimum(const point_record& point, int terminals);
  double finish(const landmark_tree& tree);

  const landmark_settings& settings_;
  point_tree tree_;
  std::vector<landmark_point> vertices_;   // positions by vertex of `tree_`
  std::vector<landmark_point> positions_;  // by node
  std::vector<landmark_point> neighbours_;
  std::vector<double> distances_;
  grid_passes passes_;
  tree_springs springs_;
};

}  // namespace zeb
