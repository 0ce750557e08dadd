// The order of clips that promise most first.
#pragma once

#include <cstdint>
#include <span>

#include "engine/search_data.h"

namespace zeb {

/// Fills `order` (`nodes` entries) with the nodes of the tree in work, whose sets must be valid.
/// Its first entry is 0, which isn't clipped.
void promising_clips_first(const search_data& data, std::span<std::int32_t> order);

/// The same, with the nodes given first, as they come, and then the others.
void given_clips_first(std::span<const std::int32_t> given, std::span<std::int32_t> order);

}  // namespace zeb
