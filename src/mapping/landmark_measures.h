// Landmark characters as scores of stored trees see them.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "engine/plain/landmark_measure.h"

namespace zeb {

std::unique_ptr<landmark_measure> measure_landmarks(std::span<const std::uint8_t> characters,
                                                    std::span<const std::uint8_t> ignored_taxa);

/// See `engine_hooks`. The branches of a base that is split in two always stay: they are one, and
/// without it nothing could be optimised any more.
void mark_moved_landmarks(const_tree_span tree, std::span<const std::uint8_t> characters,
                          std::span<std::uint8_t> marks);

}  // namespace zeb
