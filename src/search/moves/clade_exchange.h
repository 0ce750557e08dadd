// Exchange of clades between trees (Moilanen 1999, Lewis 1998): where two trees have a clade of the
// same terminals, resolved in different ways, one of them can take over the other's resolution.
//
// No tree is made to find out what an exchange is worth. Full passes over both trees give the
// length of each clade and its preliminary sets; the target's clade is clipped, which leaves exact
// sets in the rest of the tree, and the source's clade is joined there in thought. Under implied
// weights, and with characters that words don't hold, the tree is scored as a whole instead.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "search/moves/shared_clades.h"
#include "search/search_context.h"

namespace zeb {

struct exchange_rules {
  bool equals = false;  // also exchanges that leave the score as it is
  bool choose = false;  // only the one of these that gains most
  int minfork = 3;      // clades whose consensus node has fewer branches are left out
};

/// Takes clades over from `source` into `target` (trees of the context in internal numbering, not
/// slots): those that gain most together, none of which holds another. `score` is that of the
/// target, before and after. Returns how many were taken.
int exchange_clades(search_context& context, std::span<std::int32_t> target,
                    std::span<const std::int32_t> source, const exchange_rules& rules,
                    double* score);

}  // namespace zeb
