// TBR in the neighbourhood of the clip's place only.
#pragma once

#include <cstdint>
#include <span>

namespace zeb {

/// As tbr_swap, with reconnections within `swapping.move_limit` nodes of where the clip was, in the
/// main tree and in the subtree; no clusters.
double limited_tbr_swap(std::span<std::int32_t> anc, int first_slot, int multi);

}  // namespace zeb
