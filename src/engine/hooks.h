// What the engine is lent by higher floors.
#pragma once

#include <cstdint>
#include <span>

#include "engine/plain/landmark_measure.h"
#include "trees/tree_record.h"

namespace zeb {

struct engine_hooks {
  landmark_measurer measure_landmarks = nullptr;
  /// Collapsing rules 5 and 6, which swap branches: called with a tree of the buffer, fills the
  /// marks as branch_judge does. Null: those rules are refused.
  void (*collapse_by_swapping)(const_tree_span tree, bool use_tbr, std::span<std::uint8_t> marks,
                               std::span<const std::uint8_t> ignored_taxa) = nullptr;
};
extern engine_hooks hooks_of_engine;

}  // namespace zeb
