// TBR in the neighbourhood of the clip's place only.
#pragma once

#include "search/moves/swapper.h"

namespace zeb {

/// As tbr_swap, with reconnections within `move_limit` nodes of where the clip was, in the
/// main tree and in the subtree; no clusters.
double limited_tbr_swap(search_context& context, std::span<std::int32_t> anc,
                        const swap_task& task);

}  // namespace zeb
