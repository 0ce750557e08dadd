// Scores of landmark characters on whole trees.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "landmarks/landmark_tree.h"
#include "landmarks/point_records.h"
#include "trees/tree_record.h"

namespace zeb {

class point_optimiser;

/// A branch shorter than this, in spans of the point, has its two ends at one place: collapsing
/// doesn't count it as a change.
constexpr double same_place = 1e-4;

/// The characters marked, on trees of the buffer. Settings and data must not change while it lives.
class landmark_scorer {
 public:
  /// `ignored_taxa` (by taxon, may be empty) count as missing.
  explicit landmark_scorer(std::span<const std::uint8_t> characters,
                           std::span<const std::uint8_t> ignored_taxa = {});
  /// Error for a tree without a basal dichotomy.
  void optimise(const_tree_span tree);

  const landmark_points& data() const { return data_; }
  /// Length of the tree for each point, as it is: without factors and weights.
  std::span<const double> lengths() const { return lengths_; }
  /// Length of a point beyond its minimum on the last tree.
  double homoplasy(std::size_t point) const;
  /// With the factors and weights of points: what `lmscore` is.
  double score_of_configuration(std::size_t configuration) const;
  /// The sum over configurations, with the weights of characters.
  double score() const;

 private:
  landmark_points data_;
  std::vector<std::vector<int>> groups_;  // of points that are optimised together
  std::vector<double> lengths_;
  mutable std::vector<double> minima_;  // made when first needed
};

/// Calls `visit` for each point of the characters marked, with the positions of all nodes of a tree
/// of the buffer: by node, terminals first; missing where no terminal below has it.
using landmark_visitor =
    std::function<void(const point_record& point, std::span<const landmark_point> positions)>;
void for_each_landmark(const_tree_span tree, std::span<const std::uint8_t> characters,
                       const landmark_visitor& visit);
/// Positions of all nodes of a tree of the buffer for one landmark of a configuration, by node.
std::vector<landmark_point> positions_of_landmark(const_tree_span tree, int character,
                                                  int landmark);
/// For all landmarks of a configuration, by landmark.
std::vector<std::vector<landmark_point>> positions_of_configuration(const_tree_span tree,
                                                                    int character);

}  // namespace zeb
