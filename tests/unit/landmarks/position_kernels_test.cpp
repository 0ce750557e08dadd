// Lengths of trees over points, against figures known by hand and against small steps in all
// directions, which nothing that is shortest can be improved by.
#include "landmarks/position_kernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <random>

#include "landmarks/joining_kernels.h"
#include "landmarks/point_records.h"
#include "landmarks/worker_threads.h"

namespace zeb {
namespace {

/// The tree (0 ((1 2) (3 4))), or what is left of it for fewer terminals, with its points.
struct small_tree {
  explicit small_tree(const std::vector<std::vector<landmark_point>>& points, int dimensions)
      : n(static_cast<int>(points[0].size())) {
    std::vector<point_record> records(points.size());
    std::vector<const point_record*> lanes;
    for (std::size_t p = 0; p < points.size(); ++p) {
      records[p].terminals = points[p];
      records[p].span = 10;
      lanes.push_back(&records[p]);
    }
    std::vector<std::int32_t> terminals(at(n));
    std::iota(terminals.begin(), terminals.end(), 0);
    blocks.terminals = n;
    add_block(blocks, lanes, dimensions, terminals);
    anc.assign(at(2 * n - 1), n);
    first.assign(anc.size(), -1);
    second.assign(anc.size(), -1);
    int top = n + 1;
    join(top, 1, 2);
    for (int t = 3; t < n; ++t) join(top + 1, top, t), ++top;
    base = {0, top};
    for (int v = top; v > n; --v) inner.push_back(v);
    positions = node_positions(blocks, 2 * n - 1);
  }
  void join(int above, int a, int b) {
    first[at(above)] = a;
    second[at(above)] = b;
    anc[at(a)] = anc[at(b)] = above;
  }
  node_walk walk() const { return {{n, anc.data(), first.data(), second.data()}, base, inner}; }
  lane_values shortest() {
    relax_positions(blocks, 0, walk(), {200, 0.3, 1e-9, true}, positions);
    return lengths_of(blocks, 0, walk(), positions);
  }
  int n;
  point_blocks blocks;
  std::vector<std::int32_t> anc, first, second, inner;
  tree_base base;
  node_positions positions;
};

TEST(position_kernels, known_lengths) {
  const double side = std::sqrt(3.0);
  // Three corners of an equilateral triangle; an angle beyond 120 degrees; two that coincide.
  small_tree three({{{0, 0, 0}, {2, 0, 0}, {1, side, 0}},
                    {{0, 0, 0}, {10, 0, 0}, {-10, 1, 0}},
                    {{0, 0, 0}, {0, 0, 0}, {3, 4, 0}},
                    {{5, 5, 0}, {5, 5, 0}, {5, 5, 0}}},
                   2);
  const lane_values lengths = three.shortest();
  EXPECT_NEAR(lengths[0], 2 * side, 1e-6);
  EXPECT_NEAR(lengths[1], 10 + std::sqrt(101.0), 1e-5);
  EXPECT_NEAR(lengths[2], 5, 1e-5);
  EXPECT_NEAR(lengths[3], 0, 1e-6);
  // A unit square joined by its short way, in space; and with one corner missing.
  small_tree four({{{0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}},
                   {{0, 0, 1}, missing_point, {1, 1, 1}, {0, 1, 1}},
                   {missing_point, missing_point, {1, 1, 1}, missing_point}},
                  3);
  const lane_values of_square = four.shortest();
  EXPECT_NEAR(of_square[0], 1 + side, 1e-6);
  EXPECT_NEAR(of_square[1], 2 * std::cos(std::acos(-1.0) / 12) * std::sqrt(1.0), 1e-4);
  EXPECT_NEAR(of_square[2], 0, 1e-9);
}

TEST(position_kernels, nothing_shorter_nearby_and_estimates_from_above) {
  std::mt19937 generator(1);
  std::uniform_real_distribution<double> draw(0, 10);
  for (const int dimensions : {2, 3}) {
    std::vector<std::vector<landmark_point>> points(5);
    for (auto& of_point : points)
      for (int t = 0; t < 7; ++t)
        of_point.push_back(
            {draw(generator), draw(generator), dimensions == 3 ? draw(generator) : 0});
    small_tree tree(points, dimensions);
    const lane_values best = tree.shortest();
    for (int trial = 0; trial < 300; ++trial) {
      node_positions moved = tree.positions;
      for (const int v : tree.inner)
        for (int i = 0; i < dimensions * block_lanes; ++i)
          moved.of(tree.blocks.blocks[0], v)[i] += (draw(generator) - 5) / (1 << trial % 12);
      const lane_values lengths = lengths_of(tree.blocks, 0, tree.walk(), moved);
      for (std::size_t p = 0; p < points.size(); ++p) EXPECT_GE(lengths[p], best[p] * (1 - 1e-6));
    }
    // The last terminal taken off and put back: its branch there costs what the tree lost, or more.
    std::vector<std::vector<landmark_point>> fewer = points;
    for (auto& of_point : fewer) of_point.back() = missing_point;
    small_tree part(fewer, dimensions);
    const lane_values without = part.shortest();
    for (std::size_t p = 0; p < points.size(); ++p) {
      double* const last = part.positions.of(part.blocks.blocks[0], 6);
      last[p] = points[p].back().x;
      last[block_lanes + p] = points[p].back().y;
      if (dimensions == 3) last[2 * block_lanes + p] = points[p].back().z;
    }
    const lane_values added =
        joining_lengths(part.blocks.blocks[0], part.positions, {6, -1}, {part.inner[1], 0});
    for (std::size_t p = 0; p < points.size(); ++p)
      EXPECT_GE(without[p] + added[p], best[p] * (1 - 1e-5));
  }
}

TEST(worker_threads, every_part_is_done_once) {
  for (const int count : {1, 2, 5}) {
    worker_threads workers(count);
    for (const int parts : {0, 1, 3, 200}) {
      std::vector<int> done(at(parts), 0);
      workers.run(parts, [&](int part) { ++done[at(part)]; });
      for (const int times : done) EXPECT_EQ(times, 1);
    }
  }
}

}  // namespace
}  // namespace zeb
