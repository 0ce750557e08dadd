#include "landmarks/grid_passes.h"

#include <algorithm>
#include <limits>

#include "base/indices.h"
#include "landmarks/fermat.h"

namespace zeb {
namespace {

/// A candidate that isn't better than another plus the way to it never is the best.
bool can_be_best(double cost, double least, double way) { return cost < least + way || way == 0; }

double coordinate(const landmark_point& p, char axis) {
  switch (axis) {
    case 'x':
      return p.x;
    case 'X':
      return -p.x;
    case 'y':
      return p.y;
    case 'Y':
      return -p.y;
    case 'z':
      return p.z;
    default:
      return -p.z;
  }
}

/// Above 0: `a` is to be preferred.
int compare(const landmark_point& a, const landmark_point& b, const tie_order& order) {
  for (const char axis : order) {
    if (axis == 0) break;
    const double difference = coordinate(a, axis) - coordinate(b, axis);
    if (difference != 0) return difference > 0 ? 1 : -1;
  }
  return 0;
}

}  // namespace

void grid_passes::begin(const point_tree& tree, std::size_t width) {
  width_ = width;
  costs_.assign(tree.node.size() * width, 0);
  best_.resize(width);
  chosen_.resize(tree.node.size());
}

void grid_passes::add_terminal(std::span<const landmark_point> candidates,
                               const landmark_point& terminal, std::span<double> costs) const {
  for (std::size_t i = 0; i < costs.size(); ++i) costs[i] += distance(candidates[i], terminal);
}

void grid_passes::add_inner(std::span<const double> below, std::span<const double> distances,
                            bool skip, std::span<double> costs) {
  const std::size_t n = costs.size();
  const std::size_t least =
      static_cast<std::size_t>(std::ranges::min_element(below) - below.begin());
  std::ranges::fill(best_, std::numeric_limits<double>::infinity());
  double* const best = best_.data();
  for (std::size_t j = 0; j < n; ++j) {
    if (skip && !can_be_best(below[j], below[least], distances[least * n + j])) continue;
    const double* const row = distances.data() + j * n;
    const double cost = below[j];
    for (std::size_t i = 0; i < n; ++i) best[i] = std::min(best[i], cost + row[i]);
  }
  for (std::size_t i = 0; i < n; ++i) costs[i] += best[i];
}

/// Of the costs in `best_`.
std::size_t grid_passes::best_of(std::span<const landmark_point> candidates, const tie_order& order,
                                 landmark_draws& draws) const {
  std::size_t found = 0;
  int alike = 1;
  for (std::size_t i = 1; i < best_.size(); ++i) {
    if (best_[i] > best_[found]) continue;
    const int preferred =
        best_[i] < best_[found] ? 1 : compare(candidates[i], candidates[found], order);
    if (preferred < 0) continue;
    if (preferred > 0) alike = 0;
    if (++alike == 1 || draws.next() % alike == 0) found = i;
  }
  return found;
}

void grid_passes::place(const point_tree& tree, int terminals,
                        std::span<const landmark_point> candidates,
                        std::span<const double> distances, const landmark_settings& settings,
                        landmark_draws& draws, std::span<landmark_point> positions) {
  begin(tree, candidates.size());
  const std::size_t size = tree.node.size();
  for (std::size_t v = size; v-- > 1;) {
    const std::span<double> above = costs_of(tree.ancestor[v]);
    if (tree.node[v] < terminals) {
      add_terminal(candidates, positions[v], above);
    } else {
      add_inner(costs_of(static_cast<int>(v)), distances, settings.skip, above);
    }
  }
  for (std::size_t v = 0; v < size; ++v) {
    if (tree.node[v] < terminals) continue;
    std::ranges::copy(costs_of(static_cast<int>(v)), best_.begin());
    if (v > 0) {
      const double* const row = distances.data() + chosen_[at(tree.ancestor[v])] * width_;
      for (std::size_t i = 0; i < width_; ++i) best_[i] += row[i];
    }
    chosen_[v] = best_of(candidates, settings.ties, draws);
    positions[v] = candidates[chosen_[v]];
  }
}

// Grids around two vertices have the same spacing, so that far fewer distances differ than there
// are pairs of candidates. `shift`: from the one corner to the other.
void grid_passes::add_nested(std::span<const double> below, const point_grid& grid,
                             const landmark_point& shift, std::span<double> costs) {
  const auto [cx, cy, cz] = grid.cells;
  const int rows = 2 * cx - 1;
  const int layers = rows * (2 * cy - 1);
  by_difference_.clear();
  for (int z = 1 - cz; z < cz; ++z) {
    for (int y = 1 - cy; y < cy; ++y) {
      for (int x = 1 - cx; x < cx; ++x) {
        by_difference_.push_back(
            distance({}, {shift.x + grid.spacing.x * x, shift.y + grid.spacing.y * y,
                          shift.z + grid.spacing.z * z}));
      }
    }
  }
  std::ranges::fill(best_, std::numeric_limits<double>::infinity());
  for (int from = 0; from < grid.size(); ++from) {
    const int x = cx - 1 - from % cx;
    const int y = cy - 1 - from / cx % cy;
    const int z = cz - 1 - from / (cx * cy);
    const double cost = below[at(from)];
    double* best = best_.data();
    for (int to_z = 0; to_z < cz; ++to_z) {
      const double* row = by_difference_.data() + x + y * rows + (to_z + z) * layers;
      for (int to_y = 0; to_y < cy; ++to_y, row += rows, best += cx) {
        for (int i = 0; i < cx; ++i) best[i] = std::min(best[i], cost + row[i]);
      }
    }
  }
  for (std::size_t i = 0; i < costs.size(); ++i) costs[i] += best_[i];
}

void grid_passes::place_nested(const point_tree& tree, int terminals, const point_grid& grid,
                               const landmark_settings& settings, landmark_draws& draws,
                               std::span<landmark_point> positions) {
  begin(tree, at(grid.size()));
  const std::size_t size = tree.node.size();
  std::vector<landmark_point> candidates(at(grid.size()));
  const auto corner_of = [&](std::size_t v) {
    const landmark_point& p = positions[v];
    return landmark_point{p.x - grid.spacing.x * (grid.cells[0] - 1) / 2,
                          p.y - grid.spacing.y * (grid.cells[1] - 1) / 2,
                          p.z - grid.spacing.z * (grid.cells[2] - 1) / 2};
  };
  const auto make_candidates = [&](std::size_t v) {
    point_grid own = grid;
    own.origin = corner_of(v);
    for (int i = 0; i < grid.size(); ++i) candidates[at(i)] = own.at_number(i);
  };
  for (std::size_t v = size; v-- > 1;) {
    const std::size_t a = at(tree.ancestor[v]);
    if (tree.node[v] < terminals) {
      make_candidates(a);
      add_terminal(candidates, positions[v], costs_of(tree.ancestor[v]));
      continue;
    }
    const landmark_point from = corner_of(v);
    const landmark_point to = corner_of(a);
    add_nested(costs_of(static_cast<int>(v)), grid, {to.x - from.x, to.y - from.y, to.z - from.z},
               costs_of(tree.ancestor[v]));
  }
  for (std::size_t v = 0; v < size; ++v) {
    if (tree.node[v] < terminals) continue;
    make_candidates(v);
    std::ranges::copy(costs_of(static_cast<int>(v)), best_.begin());
    if (v > 0) add_terminal(candidates, positions[at(tree.ancestor[v])], best_);
    positions[v] = candidates[best_of(candidates, settings.ties, draws)];
  }
}

}  // namespace zeb
