// The shapes of all terminals of a tree, moved as rigid bodies towards the least score on it.
#pragma once

#include <span>
#include <vector>

#include "base/random.h"
#include "landmarks/landmark_tree.h"
#include "landmarks/point_optimiser.h"
#include "landmarks/tree_springs.h"
#include "realign/similarity.h"

namespace zeb {

/// By terminal, the points of its shape; empty for a terminal that takes no part.
using terminal_shapes = std::vector<std::vector<landmark_point>>;

class tree_fit {
 public:
  /// `weights` by point. `still` is the terminal that never moves.
  tree_fit(landmark_tree tree, int dimensions, std::vector<double> weights, terminal_shapes shapes,
           int still);

  const terminal_shapes& shapes() const { return shapes_; }
  void set_shapes(terminal_shapes shapes) { shapes_ = std::move(shapes); }
  /// Terminals that take part, without the one that stays.
  const std::vector<int>& movable() const { return movable_; }
  const landmark_tree& tree() const { return tree_; }
  /// Largest extent of a shape.
  double extent() const { return extent_; }

  /// The sum over points of weight and length of the tree.
  double score();
  /// All terminals and nodes move together, by springs whose softness falls from `first` to `last`
  /// (in extents) by the factor `hardening`.
  void relax(double first, double last, double hardening, random_generator& generator);
  /// The terminal moves to where it fits best the rest of the tree, from each of the turns.
  void refit(int terminal, std::span<const similarity> turns);

 private:
  struct anchors;
  std::vector<landmark_point> terminals_of_point(std::size_t point, int left_out) const;
  point_record record_of(std::size_t point, int left_out) const;
  /// Moves the nodes to where the trees are shortest; the sum over points of weight and length.
  double place_nodes(int left_out);
  void settle(std::size_t terminal_vertex, double softness);
  anchors anchors_of(int terminal) const;

  landmark_tree tree_;
  int dimensions_;
  std::vector<double> weights_;
  terminal_shapes shapes_;
  std::vector<int> movable_;
  double extent_ = 0;
  landmark_settings settings_;  // the defaults: what alignments mean doesn't depend on grids
  point_optimiser optimiser_{settings_};
  tree_springs springs_;
  point_tree vertices_;                              // the same for all points
  std::vector<std::vector<landmark_point>> vertex_;  // by point, then vertex
  std::vector<std::vector<landmark_point>> nodes_;   // by point, then node of the tree
};

}  // namespace zeb
