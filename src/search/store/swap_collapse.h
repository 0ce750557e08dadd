// Collapsing by swapping: a branch goes if a tree one move away, no worse than the tree, lacks it.
#pragma once

#include <cstdint>
#include <span>

#include "trees/tree_record.h"

namespace zeb {

/// Fills `marks` for a tree of the buffer as branch_judge does, by SPR or TBR, in a context of its
/// own over the user's data. Clades of `ignored_taxa` (by matrix row; may be empty) alone aren't
/// moved. Errors: what packing refuses; trees without all active taxa.
void collapse_by_swapping(const_tree_span tree, bool use_tbr, std::span<std::uint8_t> marks,
                          std::span<const std::uint8_t> ignored_taxa);

}  // namespace zeb
