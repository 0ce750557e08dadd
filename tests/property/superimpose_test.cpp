// Superposition by least distances: moved copies come back, and nothing found by trying is better.
#include "realign/superimpose.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "realign/resistant_fit.h"

namespace zeb {
namespace {

using points = std::vector<landmark_point>;

class shapes {
 public:
  explicit shapes(int dimensions) : dimensions_(dimensions) {}
  double real(double low, double high) {
    return std::uniform_real_distribution<>(low, high)(generator_);
  }
  points draw(int count, double size = 1) {
    points drawn(static_cast<std::size_t>(count));
    for (landmark_point& p : drawn)
      p = {real(-size, size), real(-size, size), dimensions_ == 3 ? real(-size, size) : 0};
    return drawn;
  }
  similarity motion(double scale) {
    similarity drawn;
    const double angle = real(-std::numbers::pi, std::numbers::pi);
    drawn.turn = dimensions_ == 2 ? turn_in_plane(std::cos(angle), std::sin(angle))
                                  : turn_of_quaternion(unit_quaternion());
    drawn.scale = scale;
    const double far = 50;
    drawn.shift = {real(-far, far), real(-far, far), dimensions_ == 3 ? real(-far, far) : 0};
    return drawn;
  }
  similarity half_turn(double more) {
    similarity turned = motion(1);
    turned.turn =
        turn_in_plane(std::cos(std::numbers::pi + more), std::sin(std::numbers::pi + more));
    return turned;
  }

 private:
  std::array<double, 4> unit_quaternion() {
    std::normal_distribution<> normal;
    std::array<double, 4> q;
    double square = 0;
    for (double& v : q) {
      v = normal(generator_);
      square += v * v;
    }
    for (double& v : q) v /= std::sqrt(square);
    return q;
  }
  int dimensions_;
  std::mt19937 generator_{7};
};

points moved(points list, const similarity& motion) {
  move_points(list, motion);
  return list;
}

double largest_distance(const points& a, const points& b) {
  double largest = 0;
  for (std::size_t i = 0; i < a.size(); ++i) largest = std::max(largest, distance_of(a[i], b[i]));
  return largest;
}

TEST(superimpose, brings_back_moved_copies) {
  for (const int dimensions : {2, 3}) {
    shapes some(dimensions);
    for (int round = 0; round < 60; ++round) {
      const bool scales = round % 2 == 0;
      const points reference = some.draw(4 + round % 9);
      const double offset = round % 3 == 0 ? 1e-9 : 0;
      const similarity motion =
          round % 5 == 0 ? some.half_turn(offset) : some.motion(scales ? some.real(0.2, 5) : 1);
      points target = moved(reference, motion);
      const superposition_rules rules = {.scales = scales};
      move_points(target, superimpose({dimensions, reference, target, {}}, rules));
      EXPECT_LT(largest_distance(reference, target), 1e-11) << dimensions << " " << round;
      // What lies as it should stays bit by bit.
      EXPECT_EQ(moved(reference, superimpose({dimensions, reference, reference, {}}, rules)),
                reference);
      if (dimensions == 3) continue;
      target = moved(reference, motion);
      move_points(target, resistant_motion(reference, target, scales));
      EXPECT_LT(largest_distance(reference, target), 1e-11) << round;
    }
  }
}

// Half of the points agree: sums of distances, and medians, follow these and let the others be.
TEST(superimpose, resists_points_that_differ) {
  shapes some(2);
  for (int round = 0; round < 30; ++round) {
    const points reference = some.draw(9);
    points target = moved(reference, some.motion(1));
    for (const std::size_t i : {1U, 6U}) target[i] = some.draw(1, 3)[0];
    const similarity linear = superimpose({2, reference, target, {}}, {});
    const similarity resistant = resistant_motion(reference, target, false);
    for (const std::size_t i : {0U, 2U, 3U, 4U, 5U, 7U, 8U}) {
      EXPECT_LT(distance_of(linear.moved(target[i]), reference[i]), 1e-9);
      EXPECT_LT(distance_of(resistant.moved(target[i]), reference[i]), 1e-9);
    }
  }
}

/// The best shift of a turned target, by many rounds towards the geometric median.
double best_shifted(const matched_points& list, similarity motion) {
  for (int round = 0; round < 60; ++round) {
    landmark_point sum;
    double total = 0;
    for (std::size_t i = 0; i < list.target.size(); ++i) {
      const landmark_point gap = difference(list.reference[i], motion.moved(list.target[i]));
      const double w = list.weights[i] / (std::sqrt(dot_product(gap, gap)) + 1e-9);
      sum = {sum.x + w * gap.x, sum.y + w * gap.y, sum.z + w * gap.z};
      total += w;
    }
    motion.shift = {motion.shift.x + sum.x / total, motion.shift.y + sum.y / total,
                    motion.shift.z + sum.z / total};
  }
  return sum_of_distances(list, motion);
}

TEST(superimpose, is_never_worse_than_trying) {
  for (const int dimensions : {2, 3}) {
    shapes some(dimensions);
    for (int round = 0; round < 12; ++round) {
      const points reference = some.draw(6);
      const points target = some.draw(6);
      std::vector<double> weights;
      for (int i = 0; i < 6; ++i) weights.push_back(std::floor(some.real(1, 4)));
      const matched_points list = {dimensions, reference, target, weights};
      const double found = sum_of_distances(list, superimpose(list, {}));
      for (int i = 0; i < 1500; ++i)
        EXPECT_LE(found, best_shifted(list, some.motion(1)) + 1e-7) << dimensions << " " << round;
    }
  }
}

TEST(superimpose, degenerate_points_do_no_harm) {
  const points corner(5, landmark_point{3, 4, 0});
  const points at_zero(5, landmark_point{});
  for (const bool scales : {false, true}) {
    EXPECT_EQ(moved(corner, superimpose({2, at_zero, corner, {}}, {.scales = scales})), at_zero);
    EXPECT_EQ(moved(corner, resistant_motion(at_zero, corner, scales)), at_zero);
  }
}

}  // namespace
}  // namespace zeb
