// Landmark characters as scores of stored trees see them.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "engine/plain/landmark_measure.h"

namespace zeb {

std::unique_ptr<landmark_measure> measure_landmarks(std::span<const std::uint8_t> characters,
                                                    std::span<const std::uint8_t> ignored_taxa);

}  // namespace zeb
