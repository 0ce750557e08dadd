// What joinings cost in wide characters, and the steps of those under implied weights. All of this
// is called only where `has_wide` is set. See wide_kinds.h.
#pragma once

#include <vector>

#include "engine/search_data.h"

namespace zeb {

/// Cost of joining, in units of the score. With a cluster on a side it is at most that of each of
/// its branches. A result above `bound` need not be exact.
double wide_join_cost(const search_data& data, join_side clip, join_side main, double bound);

/// The same for each wide character, whatever the sum.
void wide_join_costs(const search_data& data, join_side clip, join_side main,
                     std::vector<double>& costs);
/// Weighted steps that set a node apart from its ancestor, roughly, whatever the criterion.
double wide_change_above(const search_data& data, int node);

/// Implied weights: counts the steps of joining, or takes them off and returns what they cost.
void add_wide_steps(search_data& data, join_side clip, join_side main);
double remove_wide_steps(search_data& data, join_side clip, join_side main);
/// Implied weights: puts all characters to no steps, for a down-pass to count in.
void reset_wide_steps(search_data& data);
/// Implied weights: the fit of all wide characters by the steps as they are.
double total_wide_fit(const search_data& data);

}  // namespace zeb
