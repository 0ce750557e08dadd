// What the engine is lent by higher floors.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "engine/plain/landmark_measure.h"
#include "engine/whole_trees.h"
#include "trees/tree_record.h"

namespace zeb {

struct engine_hooks {
  landmark_measurer measure_landmarks = nullptr;
  /// Marks the branches of a tree of the buffer along which some landmark of the characters marked
  /// moves; the other marks stay.
  void (*mark_moved_landmarks)(const_tree_span tree, std::span<const std::uint8_t> characters,
                               std::span<std::uint8_t> marks) = nullptr;
  /// Collapsing rules 5 and 6, which swap branches: called with a tree of the buffer, fills the
  /// marks as branch_judge does. Null: those rules are refused.
  void (*collapse_by_swapping)(const_tree_span tree, bool use_tbr, std::span<std::uint8_t> marks,
                               std::span<const std::uint8_t> ignored_taxa) = nullptr;
  /// Landmark characters of a data set whose taxa are numbered. Null: packing refuses them.
  std::shared_ptr<whole_tree_characters> (*landmarks_of_data)(
      const search_data& data, const packing_request& request) = nullptr;
};
extern engine_hooks hooks_of_engine;

}  // namespace zeb
