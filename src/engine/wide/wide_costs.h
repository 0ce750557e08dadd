// What joinings cost in wide characters, and the steps of those under implied weights. All of this
// is called only where `has_wide` is set. See wide_kinds.h.
#pragma once

#include <vector>

#include "engine/search_data.h"

namespace zeb {

/// Cost of joining, in units of the score. With a cluster on a side it is at most that of each of
/// its branches. A result above `bound` need not be exact. Under implied weights the kernel must
/// have costed the same joining just before: characters that share a set with packed ones go on
/// from there.
double wide_join_cost(const search_data& data, join_side clip, join_side main, double bound);

/// The steps of joining of each wide character, whatever the sum.
void wide_join_steps(const search_data& data, join_side clip, join_side main,
                     std::vector<std::int64_t>& steps);
/// What the steps of a character more than there are on the tree in work cost, weighted; of a
/// character of a set, what they add to its sum.
double cost_of_wide_steps(const search_data& data, const wide_part& part, const wide_character& c,
                          std::int64_t steps);
/// Weighted steps that set a node apart from its ancestor, roughly, whatever the criterion.
double wide_change_above(const search_data& data, int node);

/// Implied weights: counts the steps of joining, or takes them off and returns what they cost.
void add_wide_steps(search_data& data, join_side clip, join_side main);
double remove_wide_steps(search_data& data, join_side clip, join_side main);
/// Implied weights: puts all characters to no steps, for a down-pass to count in.
void reset_wide_steps(search_data& data);
/// Implied weights, once they are counted: adds to the sums of sets; notes the fits of the others.
void add_wide_to_sets(search_data& data);
void refresh_wide_fits(search_data& data);
/// Implied weights: the fit of the wide characters outside of sets by the steps as they are.
double total_wide_fit(const search_data& data);

}  // namespace zeb
