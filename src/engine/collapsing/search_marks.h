// The quick collapsing rules, on the node sets of a search.
#pragma once

#include <cstdint>
#include <span>

#include "engine/search_data.h"

namespace zeb {

/// Marks of the tree in work (internal numbering, `nodes` entries, full sets valid) under the quick
/// form of rule `level`: all 1 at level 0. 1 for terminals and the root.
void search_marks(const search_data& data, int level, std::span<std::uint8_t> marks);

}  // namespace zeb
