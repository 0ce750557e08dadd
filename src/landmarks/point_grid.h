// Where the nodes of a tree may lie: points of a grid, and terminals.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "landmarks/landmark_settings.h"
#include "matrix/landmark_points.h"

namespace zeb {

/// Draws for ties and distortions of grids. Each point begins anew, so that its result depends on
/// nothing else.
class landmark_draws {
 public:
  /// 0 to 32767.
  int next() {
    state_ = state_ * 1103515245U + 12345U;
    return static_cast<int>((state_ >> 16) & 32767U);
  }

 private:
  std::uint32_t state_ = 1;
};

/// Points in rows, x fastest: number = x + cells * (y + cells * z). An axis without extent has one.
struct point_grid {
  landmark_point origin;
  landmark_point spacing;
  std::array<int, 3> cells = {1, 1, 1};

  int size() const { return cells[0] * cells[1] * cells[2]; }
  landmark_point at_number(int number) const;
};
/// Over a frame, with so many points along each axis.
point_grid grid_over(const landmark_point& least, const landmark_point& most, int cells);

/// The grid, and the positions of terminals if they are candidates.
std::vector<landmark_point> candidates_of(std::span<const landmark_point> terminals,
                                          const point_grid& grid,
                                          const landmark_settings& settings);
/// All distances among points, row by row.
void fill_distances(std::span<const landmark_point> points, std::vector<double>& distances);

}  // namespace zeb
