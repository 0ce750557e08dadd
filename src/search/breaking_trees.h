// Trees that a search finds in memory although they break the constraints in force.
#pragma once

#include <cstdint>
#include <vector>

#include "search/search_context.h"

namespace zeb {

/// A byte for each tree of the slots; the tree in work is another one afterwards.
std::vector<std::uint8_t> breaking_trees(search_context& context);

/// What searches over a pool add to the scores of such trees: any other tree is better then.
constexpr double breaking_handicap = 2147483648.0;
void handicap_breaking_trees(search_context& context);
/// Takes it off where all trees have it, so that the best of them stay. Returns whether it did.
bool lift_handicaps(search_context& context);

}  // namespace zeb
