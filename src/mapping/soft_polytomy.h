// A polytomy that each character resolves as suits it best (Maddison 1989).
//
// The nodes of a resolution join the values at the feet of its branches. Unordered values are
// joined at one step for each beyond the first, ordered ones at what lies between the outer ones,
// so it is enough to try sets, or ranges, of values that a resolution may have, however many
// branches there are. With other costs the best binary tree of each set of branches is put together
// from those of two parts of it.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "mapping/state_model.h"

namespace zeb {

/// Is there a way that takes no ages, for a character and so many branches?
bool can_resolve(const state_model& model, std::size_t branches);

/// Of a polytomy that can be resolved. Costs that no best reconstruction has may be too low, but
/// not so that it would seem to have them.
struct soft_costs {
  std::vector<std::int64_t> own;  // what all of it costs, by the value of the node at its base
  /// For each branch what everything but it and its subtree costs, by the value at its foot.
  std::vector<std::vector<std::int64_t>> rest;
};
/// `from_above`: for each branch, what it costs with its subtree by the value at its foot.
/// `outside`: what is beyond the polytomy, by the node's value; empty: `rest` isn't wanted.
soft_costs resolve_polytomy(const state_model& model,
                            std::span<const std::span<const std::int64_t>> from_above,
                            std::span<const std::int64_t> outside = {});

}  // namespace zeb
