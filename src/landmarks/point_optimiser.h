// Points on a tree: positions of all nodes for which the branches have the least total length.
//
// That is a Steiner problem on a given tree, and convex: all nodes go to the one optimum
// (`shortest_positions.h`), for several points at a time. Where the user limits that, every node is
// placed on a grid by dynamic programming (Sankoff 1975), then on finer grids around what was
// found, and from there all nodes move for as many rounds as are allowed: each branch is a spring
// whose strength is the inverse of its length, so that one sweep over the tree finds where they
// come to rest, and lengths are softened less and less; Fermat points, node by node, end a round.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "landmarks/grid_passes.h"
#include "landmarks/landmark_settings.h"
#include "landmarks/landmark_tree.h"
#include "landmarks/point_blocks.h"
#include "landmarks/point_records.h"
#include "landmarks/tree_springs.h"

namespace zeb {

/// The points, by number, in groups that are placed together: of one number of dimensions, had by
/// the same terminals, at most `block_lanes` of them.
std::vector<std::vector<int>> groups_of_points(std::span<const point_record> points);

/// Owns all that it works on, so that each thread can have one. Results don't depend on what was
/// optimised before.
class point_optimiser {
 public:
  /// The settings must outlive it.
  explicit point_optimiser(const landmark_settings& settings) : settings_(settings) {}

  /// A group of points, by all means that are set. The tree must live until the next one.
  void optimise(const landmark_tree& tree, std::span<const point_record> points,
                std::span<const int> group);
  /// The total length for one point of the group. Times `multiplier()` it is the score.
  double length(std::size_t lane) const { return lengths_[lane]; }
  /// Its positions, by node of the whole tree: missing where no terminal below has it.
  std::span<const landmark_point> positions(std::size_t lane);
  /// Marks the nodes above which there are branches longer than `least` spans for some of the
  /// points. Nodes on the way from one place where lineages meet to the next are alike.
  void mark_long_branches(double least, std::span<std::uint8_t> marks) const;

 private:
  bool begin(const point_record& point);
  void place_all();
  void settle_polytomies(std::span<landmark_point> positions);
  void place_by_steps(const point_record& point);
  void place_on_grids(const point_record& point);
  void shake(const point_record& point, landmark_draws& draws, point_grid& grid);
  void move_to_optimum(const point_record& point);

  const landmark_settings& settings_;
  const landmark_tree* whole_ = nullptr;
  std::vector<const point_record*> points_;  // of the group
  point_tree tree_;
  std::vector<std::vector<landmark_point>> placed_;  // by point and vertex of `tree_`
  std::array<double, block_lanes> lengths_{};
  std::vector<landmark_point> vertices_;   // of the point in work
  std::vector<landmark_point> positions_;  // by node
  std::vector<landmark_point> neighbours_;
  std::vector<double> distances_;
  std::vector<double> coordinates_;  // of the group, as `find_shortest` has them
  grid_passes passes_;
  tree_springs springs_;
};

}  // namespace zeb
