// Parsimony on one tree of the buffer, over the matrix itself: real states, polytomies, inactive
// characters on request. The reports, the collapsing rules and the scores of stored trees use it;
// searches don't.
//
// It works in slices of the characters, so that memory doesn't grow with the matrix. What fits in
// one slice is read once for all trees; else each tree has the cells read anew.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <span>
#include <vector>

#include "engine/plain/landmark_measure.h"
#include "engine/plain/plain_slice.h"
#include "trees/tree_record.h"

namespace zeb {

class plain_optimiser {
 public:
  /// Takes the characters marked (one byte each); `ignored_taxa` (may be empty) count as missing.
  /// Cells and settings of characters must not change while it lives. Slices have `most_columns`
  /// at most, unless a character needs more; 0: what goes into a small part of `mxram`.
  /// Landmark characters among those marked are optimised beside the slices.
  explicit plain_optimiser(std::span<const std::uint8_t> characters,
                           std::span<const std::uint8_t> ignored_taxa = {},
                           std::size_t most_columns = 0);

  /// Counts steps on a tree, which may be polytomous and lack taxa.
  void optimise(const_tree_span tree, polytomy_kind polytomies);
  /// The same with hard polytomies and without landmarks, and calls `visit` for each slice, whose
  /// sets of all nodes are good until it returns.
  using slice_visitor = std::function<void(const plain_slice&)>;
  void optimise(const_tree_span tree, const slice_visitor& visit);

  /// Steps of a character on the last tree, unweighted; thousandths for continuous characters, none
  /// for landmarks.
  std::int64_t steps(int character) const { return steps_[static_cast<std::size_t>(character)]; }
  /// The same in whole units, also for landmarks.
  double length(int character) const;
  /// What implied weights see of the points of a landmark character on the last tree.
  std::vector<landmark_measure::point> points(int character) const {
    return landmarks_->points(character);
  }
  /// Weighted sum over the characters, continuous ones in whole units.
  double score() const;
  bool has_landmarks() const { return landmarks_ != nullptr; }
  /// Are there characters whose lengths aren't whole?
  bool has_continuous() const { return has_continuous_; }

 private:
  void divide_into_slices(std::size_t most_columns);
  void optimise_slices(const_tree_span tree, polytomy_kind polytomies, const slice_visitor* visit);
  void load_slice(std::size_t number);

  std::vector<plain_character> characters_;
  std::vector<std::uint8_t> ignored_taxa_;
  bool has_continuous_ = false;
  std::vector<std::size_t> slice_ends_;  // in `characters_`
  static constexpr std::size_t no_slice = std::numeric_limits<std::size_t>::max();
  std::size_t loaded_ = no_slice;  // number of the slice at hand
  plain_slice slice_;
  std::vector<std::int64_t> steps_;              // by character
  std::unique_ptr<landmark_measure> landmarks_;  // null without such characters
  int first_landmark_ = 0;                       // character
};

/// The characters that scores count: active and of non-zero weight.
std::vector<std::uint8_t> scored_characters();

}  // namespace zeb
