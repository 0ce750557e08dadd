#include "realign/tree_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "base/indices.h"
#include "landmarks/fermat.h"
#include "realign/superimpose.h"

namespace zeb {
namespace {

double softened(const landmark_point& a, const landmark_point& b, double softness) {
  return std::sqrt(squared_distance(a, b) + softness * softness);
}

/// What several springs pull towards.
class balance {
 public:
  void add(const landmark_point& p, double strength) {
    sum_ = {sum_.x + strength * p.x, sum_.y + strength * p.y, sum_.z + strength * p.z};
    strength_ += strength;
  }
  double strength() const { return strength_; }
  landmark_point place() const {
    return {sum_.x / strength_, sum_.y / strength_, sum_.z / strength_};
  }

 private:
  landmark_point sum_;
  double strength_ = 0;
};

landmark_point middle_of(std::span<const landmark_point> points) {
  balance all;
  for (const landmark_point& p : points) all.add(p, 1);
  return all.place();
}

}  // namespace

/// Where a terminal joins the rest of the tree: by point, the places of its ancestor's other
/// neighbours.
struct tree_fit::anchors {
  std::vector<std::vector<landmark_point>> places;

  double cost_of(std::size_t point, const landmark_point& x) const {
    const auto& list = places[point];
    if (list.size() == 2) return fermat_distance(x, list[0], list[1]);
    return list.empty() ? 0 : distance(x, list[0]);
  }
};

tree_fit::tree_fit(landmark_tree tree, int dimensions, std::vector<double> weights,
                   terminal_shapes shapes, int still)
    : tree_(std::move(tree)),
      dimensions_(dimensions),
      weights_(std::move(weights)),
      shapes_(std::move(shapes)) {
  for (int t = 0; at(t) < shapes_.size(); ++t) {
    if (shapes_[at(t)].empty()) continue;
    if (t != still) movable_.push_back(t);
    for (const landmark_point& p : shapes_[at(t)])
      extent_ = std::max(extent_, distance(p, shapes_[at(t)][0]));
  }
  vertices_ = tree_of_point(tree_, terminals_of_point(0, -1));
  nodes_.assign(weights_.size(), std::vector<landmark_point>(at(tree_.nodes()), missing_point));
  vertex_.assign(weights_.size(), std::vector<landmark_point>(at(vertices_.size())));
}

std::vector<landmark_point> tree_fit::terminals_of_point(std::size_t point, int left_out) const {
  std::vector<landmark_point> places(at(tree_.terminals), missing_point);
  for (int t = 0; t < tree_.terminals; ++t)
    if (t != left_out && !shapes_[at(t)].empty()) places[at(t)] = shapes_[at(t)][point];
  return places;
}

point_record tree_fit::record_of(std::size_t point, int left_out) const {
  point_record record;
  record.dimensions = dimensions_;
  record.terminals = terminals_of_point(point, left_out);
  record.effort = point_effort::full;
  for (const landmark_point& p : record.terminals)
    for (const landmark_point& q : record.terminals)
      if (!is_missing(p) && !is_missing(q)) record.span = std::max(record.span, distance(p, q));
  return record;
}

double tree_fit::place_nodes(int left_out) {
  std::vector<point_record> records;
  for (std::size_t p = 0; p < weights_.size(); ++p) records.push_back(record_of(p, left_out));
  double sum = 0;
  for (const std::vector<int>& group : groups_of_points(records)) {
    optimiser_.optimise(tree_, records, group);
    for (std::size_t l = 0; l < group.size(); ++l) {
      sum += weights_[at(group[l])] * optimiser_.length(l);
      std::ranges::copy(optimiser_.positions(l), nodes_[at(group[l])].begin());
    }
  }
  return sum;
}

double tree_fit::score() { return place_nodes(-1); }

// A terminal and its ancestor come to rest together: the springs of the ancestor's other branches,
// in series with that of the terminal, pull at each of its points, and least squares say how the
// rigid shape yields.
void tree_fit::settle(std::size_t v, double softness) {
  const int terminal = vertices_.node[v];
  const int up = vertices_.ancestor[v] != point_tree::none
                     ? vertices_.ancestor[v]
                     : vertices_.children_of(static_cast<int>(v))[0];
  const auto a = at(up);
  std::vector<landmark_point>& shape = shapes_[at(terminal)];
  std::vector<landmark_point> places;
  std::vector<double> pulls;
  std::vector<balance> others(shape.size());
  for (std::size_t p = 0; p < shape.size(); ++p) {
    const auto& vertex = vertex_[p];
    const auto add = [&](int neighbour) {
      if (neighbour != point_tree::none && at(neighbour) != v)
        others[p].add(vertex[at(neighbour)],
                      1 / softened(vertex[a], vertex[at(neighbour)], softness));
    };
    if (vertices_.node[a] < tree_.terminals) {
      others[p].add(vertex[a], 1 / softened(vertex[v], vertex[a], softness));
    } else {
      add(vertices_.ancestor[a]);
      for (const int c : vertices_.children_of(up)) add(c);
    }
    const double own = 1 / softened(vertex[v], vertex[a], softness);
    places.push_back(others[p].place());
    pulls.push_back(weights_[p] * own * others[p].strength() / (own + others[p].strength()));
  }
  move_points(shape, least_squares_motion({dimensions_, places, shape, pulls}, {}));
  for (std::size_t p = 0; p < shape.size(); ++p) {
    auto& vertex = vertex_[p];
    if (vertices_.node[a] >= tree_.terminals) {
      others[p].add(shape[p], 1 / softened(vertex[v], vertex[a], softness));
      vertex[a] = others[p].place();
    }
    vertex[v] = shape[p];
  }
}

void tree_fit::relax(double first, double last, double hardening, random_generator& generator) {
  place_nodes(-1);
  for (std::size_t p = 0; p < weights_.size(); ++p)
    for (std::size_t v = 0; v < vertex_[p].size(); ++v)
      vertex_[p][v] = nodes_[p][at(vertices_.node[v])];
  std::vector<int> vertex_of(at(tree_.terminals), -1);
  for (int v = 0; v < vertices_.size(); ++v)
    if (vertices_.node[at(v)] < tree_.terminals) vertex_of[at(vertices_.node[at(v)])] = v;
  std::vector<int> order(movable_.size());
  constexpr int rounds = 3;  // at each softness
  for (double softness = first; softness >= last; softness *= hardening) {
    for (int round = 0; round < rounds; ++round) {
      for (std::vector<landmark_point>& vertex : vertex_)
        springs_.sweep(vertices_, tree_.terminals, softness * extent_, vertex);
      random_sequence(generator, static_cast<int>(order.size()), order, -1, {});
      for (const int i : order) settle(at(vertex_of[at(movable_[at(i)])]), softness * extent_);
    }
  }
  for (std::size_t p = 0; p < weights_.size(); ++p)
    fill_positions(tree_, vertices_, vertex_[p], nodes_[p]);
}

tree_fit::anchors tree_fit::anchors_of(int terminal) const {
  std::vector<int> neighbours;
  // Nodes of a single lineage are passed: their neighbours say the same.
  int v = 0;
  while (vertices_.node[at(v)] != terminal) ++v;
  const int up = vertices_.ancestor[at(v)] != point_tree::none ? vertices_.ancestor[at(v)]
                                                               : vertices_.children_of(v)[0];
  if (vertices_.node[at(up)] < tree_.terminals) {
    neighbours.push_back(up);
  } else {
    if (vertices_.ancestor[at(up)] != point_tree::none)
      neighbours.push_back(vertices_.ancestor[at(up)]);
    for (const int c : vertices_.children_of(up)) neighbours.push_back(c);
    std::erase(neighbours, v);
  }
  anchors found;
  for (const auto& nodes : nodes_) {
    found.places.emplace_back();
    for (const int n : neighbours) found.places.back().push_back(nodes[at(vertices_.node[at(n)])]);
  }
  return found;
}

namespace {

/// The sum of what the points cost, each times its weight.
template <class anchor_list>
double cost_of_shape(const anchor_list& anchors, std::span<const landmark_point> shape,
                     std::span<const double> weights) {
  double sum = 0;
  for (std::size_t p = 0; p < shape.size(); ++p) sum += weights[p] * anchors.cost_of(p, shape[p]);
  return sum;
}

/// A rigid shape yields to springs between its points, a node for each, and the node's anchors.
template <class anchor_list>
void yield(const anchor_list& anchors, int dimensions, std::span<const double> weights,
           std::vector<landmark_point>& shape, std::vector<landmark_point>& nodes,
           double softness) {
  std::vector<landmark_point> places;
  std::vector<double> pulls;
  std::vector<balance> others(shape.size());
  std::vector<double> own;
  for (std::size_t p = 0; p < shape.size(); ++p) {
    for (const landmark_point& a : anchors.places[p])
      others[p].add(a, 1 / softened(nodes[p], a, softness));
    own.push_back(1 / softened(shape[p], nodes[p], softness));
    places.push_back(others[p].place());
    pulls.push_back(weights[p] * own[p] * others[p].strength() / (own[p] + others[p].strength()));
  }
  move_points(shape, least_squares_motion({dimensions, places, shape, pulls}, {}));
  for (std::size_t p = 0; p < shape.size(); ++p) {
    others[p].add(shape[p], own[p]);
    nodes[p] = others[p].place();
  }
}

}  // namespace

void tree_fit::refit(int terminal, std::span<const similarity> turns) {
  place_nodes(terminal);
  const anchors list = anchors_of(terminal);
  const std::vector<landmark_point> former = shapes_[at(terminal)];
  std::vector<landmark_point> middles;
  for (const auto& places : list.places) middles.push_back(middle_of(places));
  double least = cost_of_shape(list, former, weights_);
  const auto descend = [&](std::vector<landmark_point> shape, std::span<const double> softnesses,
                           int rounds) {
    std::vector<landmark_point> nodes = middles;
    for (const double softness : softnesses)
      for (int i = 0; i < rounds; ++i)
        yield(list, dimensions_, weights_, shape, nodes, softness * extent_);
    return shape;
  };
  std::vector<landmark_point> rough = former;
  double rough_cost = least;
  for (const similarity& turn : turns) {
    std::vector<landmark_point> shape = former;
    move_points(shape, motion_about(turn, middle_of(former), middle_of(middles)));
    shape = descend(std::move(shape), std::array{0.1, 0.03}, 3);
    const double cost = cost_of_shape(list, shape, weights_);
    if (cost >= rough_cost) continue;
    rough_cost = cost;
    rough = std::move(shape);
  }
  std::vector<landmark_point> fine = descend(rough, std::array{1e-2, 1e-3, 1e-4, 1e-6}, 12);
  const double fine_cost = cost_of_shape(list, fine, weights_);
  if (fine_cost < rough_cost) rough = std::move(fine);
  shapes_[at(terminal)] = std::move(rough);
}

}  // namespace zeb
