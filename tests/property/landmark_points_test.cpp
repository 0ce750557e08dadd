// Positions of points in the nodes of random trees: the length found is between a bound that no
// positions can be below, made by duality, and a little more than that.
#include "landmarks/point_optimiser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "base/indices.h"
#include "landmarks/fermat.h"
#include "landmarks/point_search.h"

namespace zeb {
namespace {

using draws = std::mt19937;

double real(draws& draw, double most) { return std::uniform_real_distribution<>(0, most)(draw); }
int whole(draws& draw, int count) { return std::uniform_int_distribution<>(0, count - 1)(draw); }

enum class kind { scattered, in_rows, coincident, missing, in_pairs, two_heaps, count };

std::vector<landmark_point> random_terminals(draws& draw, kind wanted, int n, int dimensions) {
  std::vector<landmark_point> found;
  for (int i = 0; i < n; ++i) {
    const auto number = [&](double most) { return dimensions == 3 ? real(draw, most) : 0; };
    landmark_point p = {real(draw, 10), real(draw, 10), number(10)};
    if (wanted == kind::in_rows) p = {1.0 * whole(draw, 3), 1.0 * whole(draw, 3), std::floor(p.z)};
    if (wanted == kind::coincident && i > 0 && whole(draw, 2)) p = found[whole(draw, i)];
    if (wanted == kind::missing && whole(draw, 3) == 0) p = missing_point;
    if (wanted == kind::in_pairs) p = {1.0 * (i / 2), 1.0 * (i / 2), 0};
    if (wanted == kind::two_heaps) p = {whole(draw, 3) ? 100 + real(draw, .01) : 0, p.y / 1000, 0};
    found.push_back(p);
  }
  return found;
}

/// Ancestors; the root is node `n`, with two descendants. Some nodes have three.
std::vector<int> random_tree(draws& draw, int n) {
  std::vector<int> ancestors(static_cast<std::size_t>(2 * n - 1), -1);
  std::vector<int> free_nodes;
  for (int i = 0; i < n; ++i) free_nodes.push_back(i);
  for (int next = n + 1; free_nodes.size() > 2; ++next) {
    const int count = free_nodes.size() > 3 && whole(draw, 5) == 0 ? 3 : 2;
    for (int i = 0; i < count; ++i) {
      const int drawn = whole(draw, static_cast<int>(free_nodes.size()));
      ancestors[static_cast<std::size_t>(free_nodes[drawn])] = next;
      free_nodes.erase(free_nodes.begin() + drawn);
    }
    free_nodes.push_back(next);
  }
  for (const int v : free_nodes) ancestors[static_cast<std::size_t>(v)] = n;
  return ancestors;
}

struct edge {
  int a, b;
};

/// Branches between terminals that have the point, without dead ends; the root is left out.
std::vector<edge> branches_of(const std::vector<int>& ancestors, int n,
                              const std::vector<landmark_point>& terminals) {
  std::vector<edge> edges;
  std::vector<int> of_root;
  for (int v = 0; v < static_cast<int>(ancestors.size()); ++v) {
    if (ancestors[v] == n) of_root.push_back(v);
    if (ancestors[v] > n) edges.push_back({v, ancestors[v]});
  }
  edges.push_back({of_root[0], of_root[1]});
  for (bool changed = true; changed;) {
    changed = false;
    for (int v = 0; v < static_cast<int>(ancestors.size()); ++v) {
      if (v < n && !is_missing(terminals[v])) continue;
      const auto meets = [v](const edge& e) { return e.a == v || e.b == v; };
      if (std::ranges::count_if(edges, meets) != 1) continue;
      std::erase_if(edges, meets);
      changed = true;
    }
  }
  return edges;
}

/// Forces along the branches that balance in all inner nodes and nowhere exceed 1: by them the
/// terminals hold up a length that no positions can do without. They come from springs that are
/// solved by elimination, scaled down where one is too strong.
class least_length {
 public:
  least_length(std::vector<edge> edges, int n, const std::vector<landmark_point>& terminals)
      : edges_(std::move(edges)), n_(n), at_(2 * static_cast<std::size_t>(n), landmark_point{}) {
    double spread = 0;
    landmark_point some;
    for (int i = 0; i < n; ++i) {
      if (is_missing(terminals[i])) continue;
      some = at_[i] = terminals[i];
      for (int j = 0; j < i; ++j) {
        if (!is_missing(terminals[j])) spread = std::max(spread, distance(at_[i], at_[j]));
      }
    }
    for (std::size_t v = static_cast<std::size_t>(n); v < at_.size(); ++v)
      at_[v] = {some.x + 1e-3 * static_cast<double>(v), some.y, some.z};
    if (spread == 0) return;
    double softness = spread;
    for (int round = 0; round < 600; ++round) {
      bound_ = std::max(bound_, held_up(softness));
      if (round % 8 == 7) softness = std::max(softness * 0.75, 1e-9 * spread);
    }
  }
  double bound() const { return bound_; }

 private:
  double held_up(double softness) {
    const auto inner = at_.size() - static_cast<std::size_t>(n_);
    std::vector<std::vector<double>> rows(inner, std::vector<double>(inner + 3, 0));
    std::vector<double> strengths;
    for (const edge& e : edges_) {
      strengths.push_back(1 / std::hypot(distance(at_[e.a], at_[e.b]), softness));
      add(rows, e.a, e.b, strengths.back());
      add(rows, e.b, e.a, strengths.back());
    }
    solve(rows);
    for (std::size_t i = 0; i < inner; ++i)
      at_[i + static_cast<std::size_t>(n_)] = {rows[i][inner], rows[i][inner + 1],
                                               rows[i][inner + 2]};
    double work = 0;
    double strongest = 1;
    for (std::size_t i = 0; i < edges_.size(); ++i) {
      const double length = distance(at_[edges_[i].a], at_[edges_[i].b]);
      work += strengths[i] * length * length;
      strongest = std::max(strongest, strengths[i] * length);
    }
    return work / strongest;
  }
  void add(std::vector<std::vector<double>>& rows, int v, int other, double strength) const {
    if (v < n_) return;
    std::vector<double>& row = rows[static_cast<std::size_t>(v - n_)];
    row[static_cast<std::size_t>(v - n_)] += strength;
    if (other >= n_) {
      row[static_cast<std::size_t>(other - n_)] -= strength;
      return;
    }
    const landmark_point& p = at_[other];
    const double values[3] = {p.x, p.y, p.z};
    for (std::size_t k = 0; k < 3; ++k) row[rows.size() + k] += strength * values[k];
  }
  static void solve(std::vector<std::vector<double>>& rows) {
    const std::size_t n = rows.size();
    for (std::size_t i = 0; i < n; ++i) {
      if (rows[i][i] == 0) rows[i][i] = 1;  // a node that isn't in the tree
      for (std::size_t j = 0; j < n; ++j) {
        const double share = j == i ? 0 : rows[j][i] / rows[i][i];
        for (std::size_t k = i; share != 0 && k < n + 3; ++k) rows[j][k] -= share * rows[i][k];
      }
    }
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t k = n; k < n + 3; ++k) rows[i][k] /= rows[i][i];
    }
  }

  std::vector<edge> edges_;
  int n_;
  std::vector<landmark_point> at_;
  double bound_ = 0;
};

point_record record_of(const std::vector<landmark_point>& terminals, int dimensions,
                       const landmark_settings& settings) {
  point_record point;
  point.dimensions = dimensions;
  point.terminals = terminals;
  measure_point(point, settings);
  return point;
}

double length_alone(point_optimiser& optimiser, const landmark_tree& tree,
                    const point_record& point) {
  constexpr int alone = 0;
  optimiser.optimise(tree, {&point, 1}, {&alone, 1});
  return optimiser.length(0);
}

TEST(landmark_points, lengths_are_least) {
  draws draw(3);
  const landmark_settings settings;
  point_optimiser optimiser(settings);
  for (int trial = 0; trial < 150; ++trial) {
    const int n = 4 + whole(draw, 9);
    const int dimensions = 2 + whole(draw, 2);
    const auto wanted = static_cast<kind>(trial % static_cast<int>(kind::count));
    const auto terminals = random_terminals(draw, wanted, n, dimensions);
    const std::vector<int> ancestors = random_tree(draw, n);
    const landmark_tree tree = landmark_tree_of(ancestors, n, n);
    const point_record point = record_of(terminals, dimensions, settings);
    const double found = length_alone(optimiser, tree, point);
    const std::span<const landmark_point> positions = optimiser.positions(0);
    double sum = 0;
    for (int v = 0; v < tree.nodes(); ++v) {
      const int a = tree.ancestor[static_cast<std::size_t>(v)];
      if (a < 0) continue;
      const auto& p = positions[static_cast<std::size_t>(v)];
      const auto& q = positions[static_cast<std::size_t>(a)];
      if (!is_missing(p) && !is_missing(q)) sum += distance(p, q);
    }
    const double bound = least_length(branches_of(ancestors, n, terminals), n, terminals).bound();
    SCOPED_TRACE(testing::Message() << "trial " << trial << " of " << n << " terminals");
    EXPECT_NEAR(sum, found, 1e-9 * (1 + found)) << "positions of all nodes";
    EXPECT_GE(found, bound - 1e-9 * (1 + bound));
    EXPECT_LE(found, bound * 1.0005 + 1e-9);
  }
}

/// Points that go together come out as each of them does alone, whatever else is in the group, and
/// wherever they lie.
TEST(landmark_points, groups_change_nothing) {
  draws draw(7);
  const landmark_settings settings;
  point_optimiser optimiser(settings);
  for (int trial = 0; trial < 40; ++trial) {
    const int n = 5 + whole(draw, 40);
    const int dimensions = 2 + whole(draw, 2);
    const landmark_tree tree = landmark_tree_of(random_tree(draw, n), n, n);
    std::vector<point_record> points;
    for (int p = 0; p < 12; ++p) {
      auto terminals = random_terminals(draw, kind::scattered, n, dimensions);
      for (landmark_point& t : terminals)
        if (!is_missing(t)) t.x += p * 1e4;
      if (p % 5 == 0) terminals[at(whole(draw, n))] = missing_point;
      if (p % 7 == 0) std::ranges::fill(terminals, landmark_point{1, 2, 0});
      points.push_back(record_of(terminals, dimensions, settings));
    }
    std::vector<int> seen(points.size(), 0);
    for (const std::vector<int>& group : groups_of_points(points)) {
      optimiser.optimise(tree, points, group);
      std::vector<double> lengths;
      for (std::size_t l = 0; l < group.size(); ++l) lengths.push_back(optimiser.length(l));
      for (std::size_t l = 0; l < group.size(); ++l) {
        ++seen[at(group[l])];
        const double alone = length_alone(optimiser, tree, points[at(group[l])]);
        EXPECT_NEAR(lengths[l], alone, 1e-9 * (1 + alone)) << "trial " << trial;
      }
    }
    for (const int times : seen) EXPECT_EQ(times, 1);
  }
}

/// Settings that only save work or memory change nothing; others never go below the bound.
TEST(landmark_points, settings_agree) {
  draws draw(11);
  landmark_settings plain;
  plain.iterate = false;
  landmark_settings skipping = plain;
  skipping.skip = true;
  skipping.low_memory = true;
  landmark_settings shaken = plain;
  shaken.shakes = 5;
  landmark_settings nested = plain;
  nested.nest_rounds = 4;
  for (int trial = 0; trial < 20; ++trial) {
    const int n = 6 + whole(draw, 4);
    const auto terminals = random_terminals(draw, kind::scattered, n, 2);
    const landmark_tree tree = landmark_tree_of(random_tree(draw, n), n, n);
    const auto length = [&](const landmark_settings& settings) {
      point_optimiser optimiser(settings);
      return length_alone(optimiser, tree, record_of(terminals, 2, settings));
    };
    const double once = length(plain);
    EXPECT_EQ(once, length(skipping));
    EXPECT_LE(length(nested), once * (1 + 1e-9));
    const double best = length(landmark_settings());
    for (const landmark_settings& other : {plain, shaken, nested})
      EXPECT_GE(length(other), best * (1 - 1e-3));
  }
}

/// The search for one point finds the best of all trees of five terminals.
TEST(landmark_points, search_finds_the_best_tree) {
  draws draw(5);
  const landmark_settings settings;
  point_optimiser optimiser(settings);
  for (int trial = 0; trial < 10; ++trial) {
    const auto terminals = random_terminals(draw, kind::scattered, 5, 2 + trial % 2);
    const point_record point = record_of(terminals, 2 + trial % 2, settings);
    double best = 1e9;
    // All trees: two pairs beside one terminal, and many times over.
    std::vector<int> order = {0, 1, 2, 3, 4};
    do {
      std::vector<int> ancestors(9, -1);
      ancestors[order[0]] = ancestors[order[1]] = 6;
      ancestors[order[2]] = ancestors[order[3]] = 7;
      ancestors[6] = ancestors[7] = 8;
      ancestors[8] = ancestors[order[4]] = 5;
      best = std::min(best, length_alone(optimiser, landmark_tree_of(ancestors, 5, 5), point));
    } while (std::ranges::next_permutation(order).found);
    EXPECT_NEAR(shortest_tree_of_point(terminals, 2 + trial % 2, settings), best, 0.02 * best);
  }
}

TEST(fermat_points, special_triangles) {
  const landmark_point a = {0, 0, 0};
  const landmark_point b = {4, 0, 0};
  EXPECT_EQ(fermat_point(a, a, b), a);
  EXPECT_EQ(fermat_point(b, a, a), a);
  EXPECT_DOUBLE_EQ(fermat_distance(a, a, b), 4);
  // An angle of 120 degrees at `a`, in the plane and in space.
  const landmark_point c = {-2, 2 * std::sqrt(3.0), 0};
  EXPECT_EQ(fermat_point(b, c, a), a);
  const landmark_point d = {-1, 0, std::sqrt(3.0)};
  EXPECT_EQ(fermat_point(d, a, b), a);
  draws draw(2);
  for (int trial = 0; trial < 100; ++trial) {
    const auto p = random_terminals(draw, kind::scattered, 3, 2 + trial % 2);
    const landmark_point f = fermat_point(p[0], p[1], p[2]);
    const double sum = distance(p[0], f) + distance(p[1], f) + distance(p[2], f);
    EXPECT_NEAR(sum, fermat_distance(p[0], p[1], p[2]), 1e-9);
    const landmark_point median = geometric_median(p, {5, 5, 5});
    EXPECT_LT(distance(p[0], median) + distance(p[1], median) + distance(p[2], median),
              sum * (1 + 1e-5));
  }
}

}  // namespace
}  // namespace zeb
