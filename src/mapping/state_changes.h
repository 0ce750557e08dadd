// How often a character changes from some states to others on a tree, over all of its most
// parsimonious reconstructions.
#pragma once

#include <cstdint>

#include "engine/plain/range_optimisation.h"
#include "mapping/tree_shape.h"

namespace zeb {

struct change_range {
  int least = 0;
  int most = 0;
};

/// Branches of the tree (absent taxa allowed) on which the state goes from one of `from` to a
/// different one of `to` (sets of states, as bits), at least and at most. Discrete characters only.
/// Soft polytomies are resolved as suits the character best, up to `most_branches_resolved`; larger
/// ones are taken as hard.
constexpr std::size_t most_branches_resolved = 9;
change_range count_changes(const tree_shape& shape, int character, std::uint32_t from,
                           std::uint32_t to, polytomy_kind polytomies = polytomy_kind::hard);
/// Has the character states for such a change?
bool change_is_possible(int character, std::uint32_t from, std::uint32_t to);

}  // namespace zeb
