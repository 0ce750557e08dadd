// What landmark characters cost on stored trees. Their room isn't known here, and lends it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

class landmark_measure {
 public:
  virtual ~landmark_measure() = default;
  /// Error for a tree whose base isn't split in two.
  virtual void optimise(const_tree_span tree) = 0;
  /// Of a character on the last tree, with the factors and weights of its points, without its own;
  /// 0 for one that isn't measured.
  virtual double score(int character) const = 0;

  /// What implied weights see of one point on the last tree.
  struct point {
    double homoplasy = 0;  // beyond its minimum; never negative
    double weight = 1;
    double observed = 0;  // active taxa that have it
    double all = 0;       // active taxa
  };
  virtual std::vector<point> points(int character) const = 0;
};

/// Makes one for the landmark characters among those marked; `ignored_taxa` (may be empty) count as
/// missing.
using landmark_measurer = std::unique_ptr<landmark_measure> (*)(
    std::span<const std::uint8_t> characters, std::span<const std::uint8_t> ignored_taxa);

}  // namespace zeb
