// The best of given candidates for every node of a tree, by dynamic programming (Sankoff 1975).
#pragma once

#include <span>
#include <vector>

#include "landmarks/landmark_settings.h"
#include "landmarks/landmark_tree.h"
#include "landmarks/point_grid.h"

namespace zeb {

class grid_passes {
 public:
  /// Puts each inner vertex at a candidate; vertices that are terminals stay where they are.
  /// `distances`: among candidates, as by `fill_distances`.
  void place(const point_tree& tree, int terminals, std::span<const landmark_point> candidates,
             std::span<const double> distances, const landmark_settings& settings,
             landmark_draws& draws, std::span<landmark_point> positions);
  /// The same on a grid around the present position of each inner vertex, with such a spacing.
  void place_nested(const point_tree& tree, int terminals, const point_grid& grid,
                    const landmark_settings& settings, landmark_draws& draws,
                    std::span<landmark_point> positions);

 private:
  std::span<double> costs_of(int vertex) {
    return std::span(costs_).subspan(static_cast<std::size_t>(vertex) * width_, width_);
  }
  void add_nested(std::span<const double> below, const point_grid& grid,
                  const landmark_point& shift, std::span<double> costs);
  void begin(const point_tree& tree, std::size_t width);
  void add_terminal(std::span<const landmark_point> candidates, const landmark_point& terminal,
                    std::span<double> costs) const;
  void add_inner(std::span<const double> below, std::span<const double> distances, bool skip,
                 std::span<double> costs);
  std::size_t best_of(std::span<const landmark_point> candidates, const tie_order& order,
                      landmark_draws& draws) const;

  std::size_t width_ = 0;
  std::vector<double> costs_;          // by vertex, then candidate
  std::vector<double> best_;           // scratch, by candidate
  std::vector<std::size_t> chosen_;    // by vertex
  std::vector<double> by_difference_;  // distances in nested grids
};

}  // namespace zeb
