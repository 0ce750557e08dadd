#include "landmarks/point_optimiser.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "base/indices.h"
#include "landmarks/fermat.h"

namespace zeb {
namespace {

/// Wider by up to 22 percent, each axis by itself.
point_grid distorted(point_grid grid, landmark_draws& draws) {
  for (double* spacing : {&grid.spacing.x, &grid.spacing.y, &grid.spacing.z})
    *spacing += *spacing * (draws.next() % 100) / 450;
  return grid;
}

/// The position of the vertex that its neighbours want.
landmark_point middle_of_neighbours(const point_tree& tree, std::size_t v,
                                    std::span<const landmark_point> positions,
                                    std::vector<landmark_point>& neighbours) {
  neighbours.clear();
  if (tree.ancestor[v] != point_tree::none) neighbours.push_back(positions[at(tree.ancestor[v])]);
  for (const int c : tree.children_of(static_cast<int>(v))) neighbours.push_back(positions[at(c)]);
  if (neighbours.size() == 3) return fermat_point(neighbours[0], neighbours[1], neighbours[2]);
  constexpr int steps_towards_median = 10;  // the next rounds go on
  return geometric_median(neighbours, positions[v], steps_towards_median);
}

}  // namespace

void point_optimiser::place_on_grids(const point_record& point, int terminals) {
  landmark_draws draws;
  point_grid grid = grid_over(point.least, point.most, settings_.cells);
  const bool plain = !settings_.use_grid;  // neither distorted nor refined: there is no grid
  std::vector<landmark_point> candidates = candidates_of(point.terminals, grid, settings_);
  std::span<const double> distances = point.distances;
  if (distances.empty()) {
    fill_distances(candidates, distances_);
    distances = distances_;
  }
  passes_.place(tree_, terminals, candidates, distances, settings_, draws, vertices_);
  if (plain) return;
  if (settings_.shakes > 0) shake(point, terminals, draws, grid);
  const double steps = (settings_.cells - 1) / settings_.nest_window;
  for (int round = 0; round < settings_.nest_rounds; ++round) {
    const auto& s = grid.spacing;
    grid.spacing = {s.x / steps, s.y / steps, s.z / steps};
    if (settings_.precision > 0 &&
        std::max({grid.spacing.x, grid.spacing.y, grid.spacing.z}) < settings_.precision) {
      break;
    }
    // The grids needn't hold the positions that they are around, so that they may find worse ones.
    const std::vector<landmark_point> before = vertices_;
    passes_.place_nested(tree_, terminals, grid, settings_, draws, vertices_);
    if (length_of(tree_, vertices_) > length_of(tree_, before)) vertices_ = before;
  }
}

/// Each round has a grid of its own; the best positions and their grid stay.
void point_optimiser::shake(const point_record& point, int terminals, landmark_draws& draws,
                            point_grid& grid) {
  std::vector<landmark_point> best(vertices_);
  double least = std::numeric_limits<double>::infinity();
  const point_grid plain = grid;
  for (int round = 0; round < settings_.shakes; ++round) {
    const point_grid wider = distorted(plain, draws);
    const std::vector<landmark_point> candidates = candidates_of(point.terminals, wider, settings_);
    fill_distances(candidates, distances_);
    passes_.place(tree_, terminals, candidates, distances_, settings_, draws, vertices_);
    const double length = length_of(tree_, vertices_);
    if (length >= least) continue;
    least = length;
    best = vertices_;
    grid = wider;
  }
  vertices_ = std::move(best);
}

/// Rounds, each of sweeps of springs that are less and less softened, then of a pass of Fermat
/// points, until one gains too little. Keeps the best that it meets.
void point_optimiser::move_to_optimum(const point_record& point, int terminals) {
  // In spans of the point. A softer start forgets what the grids found and ends farther off.
  constexpr double first_softness = 0.001;
  constexpr double last_softness = 1e-6;
  constexpr double hardening = 0.7;
  std::vector<landmark_point> best(vertices_);
  double least = length_of(tree_, vertices_);
  for (int round = 0; round < settings_.max_iterations; ++round) {
    for (double softness = first_softness; softness > last_softness; softness *= hardening) {
      springs_.sweep(tree_, terminals, softness * point.span, vertices_);
    }
    for (std::size_t v = 0; v < tree_.node.size(); ++v) {
      if (tree_.node[v] >= terminals)
        vertices_[v] = middle_of_neighbours(tree_, v, vertices_, neighbours_);
    }
    const double length = length_of(tree_, vertices_);
    const double gained = least - length;
    if (gained > 0) {
      least = length;
      best = vertices_;
    }
    if (gained <= settings_.cut * point.span) break;
  }
  vertices_ = std::move(best);
}

bool point_optimiser::begin(const landmark_tree& tree, const point_record& point) {
  tree_ = tree_of_point(tree, point.terminals);
  vertices_.assign(tree_.node.size(), missing_point);
  bool has_inner = false;
  int first = tree.terminals;
  for (std::size_t v = 0; v < tree_.node.size(); ++v) {
    const int node = tree_.node[v];
    has_inner = has_inner || node >= tree.terminals;
    if (node >= tree.terminals) continue;
    vertices_[v] = point.terminals[at(node)];
    first = std::min(first, node);
  }
  for (landmark_point& p : vertices_) {
    if (is_missing(p)) p = point.terminals[at(first)];
  }
  return has_inner && point.effort == point_effort::full && point.span > 0;
}

double point_optimiser::finish(const landmark_tree& tree) {
  positions_.resize(at(tree.nodes()));
  fill_positions(tree, tree_, vertices_, positions_);
  return length_of(tree_, vertices_);
}

double point_optimiser::optimise(const landmark_tree& tree, const point_record& point) {
  if (begin(tree, point)) {
    place_on_grids(point, tree.terminals);
    if (settings_.iterate) move_to_optimum(point, tree.terminals);
  }
  return finish(tree);
}

double point_optimiser::improve(const landmark_tree& tree, const point_record& point,
                                std::span<const landmark_point> start) {
  if (begin(tree, point)) {
    for (std::size_t v = 0; v < tree_.node.size(); ++v) {
      const int node = tree_.node[v];
      if (node >= tree.terminals && !is_missing(start[at(node)])) vertices_[v] = start[at(node)];
    }
    move_to_optimum(point, tree.terminals);
  }
  return finish(tree);
}

}  // namespace zeb
