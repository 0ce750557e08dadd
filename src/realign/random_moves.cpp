#include "realign/random_moves.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/random.h"
#include "matrix/matrix.h"
#include "realign/alignment.h"

namespace zeb {
namespace {

double fraction(random_generator& generator) {
  return generator.draw() / (random_generator::largest + 1.0);
}

struct extent {
  landmark_point low{1e300, 1e300, 1e300};
  landmark_point high{-1e300, -1e300, -1e300};
  double largest() const { return std::max({high.x - low.x, high.y - low.y, high.z - low.z, 0.0}); }
  landmark_point middle() const {
    return {(low.x + high.x) / 2, (low.y + high.y) / 2, (low.z + high.z) / 2};
  }
};

extent extent_of(std::span<const landmark_point> points) {
  extent found;
  for (const landmark_point& p : points) {
    if (is_missing(p)) continue;
    found.low = {std::min(found.low.x, p.x), std::min(found.low.y, p.y),
                 std::min(found.low.z, p.z)};
    found.high = {std::max(found.high.x, p.x), std::max(found.high.y, p.y),
                  std::max(found.high.z, p.z)};
  }
  return found;
}

}  // namespace

// A random turn in space is a random unit quaternion: two random angles and one random part between
// their circles.
similarity random_turn(int dimensions, random_generator& generator) {
  const double angle = 2 * std::numbers::pi * fraction(generator);
  similarity turned;
  if (dimensions == 2) {
    turned.turn = turn_in_plane(std::cos(angle), std::sin(angle));
    return turned;
  }
  const double other = 2 * std::numbers::pi * fraction(generator);
  const double part = fraction(generator);
  const double a = std::sqrt(1 - part);
  const double b = std::sqrt(part);
  turned.turn = turn_of_quaternion(
      {a * std::sin(angle), a * std::cos(angle), b * std::sin(other), b * std::cos(other)});
  return turned;
}

void move_at_random(int character, int cycles) {
  const int dimensions = configuration_of(character)->dimensions;
  double largest = 0;
  for (int t = 0; t < matrix.ntax; ++t)
    largest = std::max(largest, extent_of(landmarks_of(character, t)).largest());
  random_generator generator(static_cast<unsigned>(draw()));
  const auto shift = [&] { return (2 * fraction(generator) - 1) * largest; };
  for (int cycle = 0; cycle < cycles; ++cycle) {
    for (int t = 0; t < matrix.ntax; ++t) {
      check_interrupt();
      const auto points = changeable_landmarks_of(character, t);
      if (lacks_configuration(character, t)) continue;
      const landmark_point middle = extent_of(points).middle();
      similarity motion = motion_about(random_turn(dimensions, generator), middle, middle);
      motion.shift.x += shift();
      motion.shift.y += shift();
      if (dimensions == 3) motion.shift.z += shift();
      move_points(points, motion);
    }
  }
}

}  // namespace zeb
