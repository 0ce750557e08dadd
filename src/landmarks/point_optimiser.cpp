#include "landmarks/point_optimiser.h"

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

#include "base/indices.h"
#include "landmarks/fermat.h"
#include "landmarks/shortest_positions.h"

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

void point_optimiser::place_on_grids(const point_record& point) {
  const int terminals = whole_->terminals;
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
  if (settings_.shakes > 0) shake(point, draws, grid);
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
void point_optimiser::shake(const point_record& point, landmark_draws& draws, point_grid& grid) {
  std::vector<landmark_point> best(vertices_);
  double least = std::numeric_limits<double>::infinity();
  const point_grid plain = grid;
  for (int round = 0; round < settings_.shakes; ++round) {
    const point_grid wider = distorted(plain, draws);
    const std::vector<landmark_point> candidates = candidates_of(point.terminals, wider, settings_);
    fill_distances(candidates, distances_);
    passes_.place(tree_, whole_->terminals, candidates, distances_, settings_, draws, vertices_);
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
void point_optimiser::move_to_optimum(const point_record& point) {
  const int terminals = whole_->terminals;
  // In spans of the point. A softer start forgets what the grids found and ends farther off.
  constexpr double softest = 0.001;
  constexpr double hardest = 1e-6;
  constexpr double hardening = 0.7;
  std::vector<landmark_point> best(vertices_);
  double least = length_of(tree_, vertices_);
  for (int round = 0; round < settings_.max_iterations; ++round) {
    for (double softness = softest; softness > hardest; softness *= hardening) {
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

/// Terminals get their positions, inner vertices that of one of them; is there more to do?
bool point_optimiser::begin(const point_record& point) {
  vertices_.assign(tree_.node.size(), missing_point);
  bool has_inner = false;
  int first = whole_->terminals;
  for (std::size_t v = 0; v < tree_.node.size(); ++v) {
    const int node = tree_.node[v];
    has_inner = has_inner || node >= whole_->terminals;
    if (node >= whole_->terminals) continue;
    vertices_[v] = point.terminals[at(node)];
    first = std::min(first, node);
  }
  for (landmark_point& p : vertices_) {
    if (is_missing(p)) p = point.terminals[at(first)];
  }
  return has_inner && point.effort == point_effort::full && point.span > 0;
}

/// Vertices of more than three branches, and what is beside them, come to lie on others. (All
/// others have done so.)
void point_optimiser::settle_polytomies(std::span<landmark_point> positions) {
  const auto is_polytomy = [&](std::size_t v) {
    return tree_.children_of(static_cast<int>(v)).size() > (v > 0 ? 2U : 3U);
  };
  const std::size_t size = tree_.node.size();
  bool any = false;
  for (std::size_t v = 0; v < size && !any; ++v) any = is_polytomy(v);
  if (!any) return;
  const auto settle = [&](std::size_t v) {
    if (tree_.node[v] >= whole_->terminals)
      positions[v] = middle_of_neighbours(tree_, v, positions, neighbours_);
  };
  for (std::size_t v = size; v-- > 0;) settle(v);
  for (std::size_t v = 0; v < size; ++v) settle(v);
}

/// Coordinates are taken from the first vertex, so that points far from 0 lose nothing.
void point_optimiser::place_all() {
  const int dims = points_[0]->dimensions;
  const std::size_t size = tree_.node.size();
  lane_values spans{};
  spans.fill(1);
  coordinates_.assign(size * at(dims) * block_lanes, 0);
  bool any = false;
  for (std::size_t l = 0; l < points_.size(); ++l) {
    const bool moves = begin(*points_[l]);
    placed_[l] = vertices_;
    if (!moves) continue;
    any = true;
    spans[l] = points_[l]->span;
    for (std::size_t v = 0; v < size; ++v) {
      double* const to = coordinates_.data() + v * at(dims) * block_lanes + l;
      to[0] = vertices_[v].x - vertices_[0].x;
      to[block_lanes] = vertices_[v].y - vertices_[0].y;
      if (dims == 3) to[2 * block_lanes] = vertices_[v].z - vertices_[0].z;
    }
  }
  if (!any) return;
  find_shortest(tree_, whole_->terminals, dims, spans, coordinates_);
  for (std::size_t l = 0; l < points_.size(); ++l) {
    if (points_[l]->effort != point_effort::full) continue;
    const landmark_point origin = placed_[l][0];
    for (std::size_t v = 0; v < size; ++v) {
      if (tree_.node[v] < whole_->terminals) continue;
      const double* const from = coordinates_.data() + v * at(dims) * block_lanes + l;
      placed_[l][v] = {origin.x + from[0], origin.y + from[block_lanes],
                       origin.z + (dims == 3 ? from[2 * block_lanes] : 0)};
    }
    settle_polytomies(placed_[l]);
  }
}

void point_optimiser::place_by_steps(const point_record& point) {
  if (!begin(point)) return;
  place_on_grids(point);
  if (settings_.iterate) move_to_optimum(point);
}

void point_optimiser::optimise(const landmark_tree& tree, std::span<const point_record> points,
                               std::span<const int> group) {
  whole_ = &tree;
  points_.clear();
  for (const int p : group) points_.push_back(&points[at(p)]);
  placed_.resize(points_.size());
  tree_ = tree_of_point(tree, points_[0]->terminals);
  if (settings_.go_to_optimum()) {
    place_all();
  } else {
    for (std::size_t l = 0; l < points_.size(); ++l) {
      place_by_steps(*points_[l]);
      placed_[l] = vertices_;
    }
  }
  for (std::size_t l = 0; l < points_.size(); ++l) lengths_[l] = length_of(tree_, placed_[l]);
}

std::span<const landmark_point> point_optimiser::positions(std::size_t lane) {
  positions_.resize(at(whole_->nodes()));
  fill_positions(*whole_, tree_, placed_[lane], positions_);
  return positions_;
}

void point_optimiser::mark_long_branches(double least, std::span<std::uint8_t> marks) const {
  const auto mark_way = [&](int node, int end) {
    for (; node != end && node != tree_.top; node = whole_->ancestor[at(node)]) marks[at(node)] = 1;
  };
  for (std::size_t v = 1; v < tree_.node.size(); ++v) {
    const std::size_t a = at(tree_.ancestor[v]);
    bool is_long = false;
    for (std::size_t l = 0; l < points_.size() && !is_long; ++l)
      is_long = points_[l]->effort != point_effort::none &&
                distance(placed_[l][v], placed_[l][a]) > least * points_[l]->span;
    if (!is_long) continue;
    // The branch over the base is that of its second end, as the base lies at the first one.
    mark_way(tree_.node[v], tree_.node[a]);
  }
}

std::vector<std::vector<int>> groups_of_points(std::span<const point_record> points) {
  std::vector<std::vector<int>> groups;
  std::map<std::pair<int, std::vector<bool>>, std::size_t> open;  // those that aren't full
  for (std::size_t p = 0; p < points.size(); ++p) {
    std::pair<int, std::vector<bool>> kind(points[p].dimensions, {});
    for (const landmark_point& t : points[p].terminals) kind.second.push_back(!is_missing(t));
    auto [found, is_new] = open.try_emplace(std::move(kind), groups.size());
    if (!is_new && groups[found->second].size() == block_lanes) {
      found->second = groups.size();
      is_new = true;
    }
    if (is_new) groups.emplace_back();
    groups[found->second].push_back(static_cast<int>(p));
  }
  return groups;
}

}  // namespace zeb
