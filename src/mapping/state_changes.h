// How often a character changes from some states to others on a tree, over all of its most
// parsimonious reconstructions.
#pragma once

#include <cstdint>

#include "trees/tree_record.h"

namespace zeb {

struct change_range {
  int least = 0;
  int most = 0;
};

/// Branches of the tree (hard polytomies, absent taxa allowed) on which the state goes from one of
/// `from` to a different one of `to` (sets of states, as bits), at least and at most. Discrete
/// characters only.
change_range count_changes(const_tree_span tree, int character, std::uint32_t from,
                           std::uint32_t to);

}  // namespace zeb
