#include "landmarks/point_grid.h"

#include "landmarks/fermat.h"

namespace zeb {

landmark_point point_grid::at_number(int number) const {
  const int x = number % cells[0];
  const int y = number / cells[0] % cells[1];
  const int z = number / (cells[0] * cells[1]);
  return {origin.x + spacing.x * x, origin.y + spacing.y * y, origin.z + spacing.z * z};
}

point_grid grid_over(const landmark_point& least, const landmark_point& most, int cells) {
  point_grid grid;
  grid.origin = least;
  const double ranges[3] = {most.x - least.x, most.y - least.y, most.z - least.z};
  double* const spacings[3] = {&grid.spacing.x, &grid.spacing.y, &grid.spacing.z};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (!(ranges[axis] > 0)) continue;
    grid.cells[axis] = cells;
    *spacings[axis] = ranges[axis] / (cells - 1);
  }
  return grid;
}

std::vector<landmark_point> candidates_of(std::span<const landmark_point> terminals,
                                          const point_grid& grid,
                                          const landmark_settings& settings) {
  std::vector<landmark_point> found;
  if (settings.use_grid) {
    for (int i = 0; i < grid.size(); ++i) found.push_back(grid.at_number(i));
  }
  if (settings.use_terminals || !settings.use_grid) {
    for (const landmark_point& p : terminals) {
      if (!is_missing(p)) found.push_back(p);
    }
  }
  return found;
}

void fill_distances(std::span<const landmark_point> points, std::vector<double>& distances) {
  const std::size_t n = points.size();
  distances.resize(n * n);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      distances[i * n + j] = distances[j * n + i] = distance(points[i], points[j]);
    }
    distances[i * n + i] = 0;
  }
}

}  // namespace zeb
