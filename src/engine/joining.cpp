#include "engine/joining.h"

#include <algorithm>

#include "engine/wide/wide_costs.h"

namespace zeb {

double join_cost(const search_data& data, join_side clip, join_side main, double bound) {
  constexpr double most_steps = 1e9;  // above all sums of weights
  const word* const a = packed_words(data, clip);
  const word* const b = packed_words(data, main);
  const double cost = data.implied_on ? data.kernels.fit.cost_pair(a, b, data.layout, bound)
                                      : data.kernels.cost_pair(
                                            a, b, data.layout,
                                            static_cast<std::int32_t>(std::min(bound, most_steps)));
  if (!data.has_wide || cost > bound) return cost;
  return cost + wide_join_cost(data, clip, main, bound - cost);
}

}  // namespace zeb
