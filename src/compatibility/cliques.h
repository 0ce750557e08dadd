// The heaviest sets of things that are compatible in pairs, by branch and bound.
#pragma once

#include <cstdint>
#include <vector>

#include "base/taxon_set.h"

namespace zeb {

struct clique_search_result {
  std::vector<taxon_set> cliques;  // the heaviest first, none within another
  std::int64_t best = 0;           // weight of the heaviest
  bool complete = true;            // the search came to its end, and there was room for all
};
/// All sets within `suboptimal` of the heaviest that nothing can be added to, at most `most` of
/// them. `neighbours`: with what each is compatible; weights are above 0. To be called as a search:
/// when it is interrupted, what was found until then is returned. The bound is the sum, over
/// classes of things that are incompatible with each other, of their largest weights.
clique_search_result heaviest_cliques(const std::vector<taxon_set>& neighbours,
                                      const std::vector<std::int64_t>& weights,
                                      std::int64_t suboptimal, std::size_t most);

}  // namespace zeb
