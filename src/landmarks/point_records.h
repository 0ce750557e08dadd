// Points as they are optimised: positions in terminals, frame, span, what their scores count.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "landmarks/landmark_settings.h"
#include "matrix/landmark_points.h"

namespace zeb {

/// How much work a point needs.
enum class point_effort : std::uint8_t {
  none,  // no terminal has it, or its score counts nothing
  star,  // it varies so little that all nodes may lie at one terminal
  full,
};

struct point_record {
  int character = 0;
  int landmark = 0;  // number within the configuration
  int dimensions = 2;
  std::vector<landmark_point> terminals;  // by terminal
  std::vector<landmark_point> counted;    // of the taxa that frame, span and minimum go by
  int count_of_taxa = 0;                  // ... with those that lack it
  landmark_point least, most;             // frame of the grid; after shrinking
  double span = 0;                        // largest distance between two terminals
  double largest_range = 0;               // along one axis, before shrinking
  double weight = 1;
  double factor = 1;
  double chosen_minimum = -1;  // of its length, by the user; negative: none
  point_effort effort = point_effort::none;
  /// Distances between candidates, symmetric; empty where they are made when needed.
  std::vector<double> distances;

  /// What the length of the tree times this is, is the score of the point.
  double multiplier() const { return factor * weight; }
};

struct configuration_record {
  int character = 0;
  int first = 0;  // points are first to end - 1
  int end = 0;
  double weight = 1;  // of the character
};

/// Points in the order of characters, then landmarks.
struct landmark_points {
  std::vector<point_record> points;
  std::vector<configuration_record> configurations;
};

/// The landmark characters among those marked (a byte each). Terminal i of the trees is taxon
/// `taxa[i]`, or nothing of the matrix (all missing) where that is negative. Frames, spans and
/// factors go by the taxa that `counts` marks (by taxon; empty: all active ones).
landmark_points gather_points(std::span<const std::uint8_t> characters, std::span<const int> taxa,
                              std::span<const std::uint8_t> counts = {});
/// The same for trees of the buffer, where terminals are taxa.
landmark_points gather_points(std::span<const std::uint8_t> characters);

/// Frame, span, effort (and distances, unless memory is short) from positions of terminals:
/// `gather_points` has done it; for who changes them.
void measure_point(point_record& point, const landmark_settings& settings);

}  // namespace zeb
