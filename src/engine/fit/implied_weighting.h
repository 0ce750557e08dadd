// Implied weights in searches: the steps of each character on the tree in work are kept in
// counters, from which the score, the fit, and the cost of the next step are read. Lower is better;
// scores are sums of weight * f(h) over the characters, h being the homoplasy and f the function of
// the character, and of N * f(H / N) over sets of N characters, H being the sum of weight * h.
//
// What a count says and what the tree in work is must agree: a full pass counts afresh; whoever
// detaches or attaches a subtree takes its steps off or adds them.
#pragma once

#include "engine/fit/fit_rules.h"
#include "engine/search_data.h"

namespace zeb {

/// Makes the fit tables and a counter for each packed character. The last step of packing, once
/// `min_steps` of the entries are final; bind_kernels follows.
void prepare_fit_tables(search_data& data, const fit_rules& rules);
/// The same for data whose entries are some of those of `outer`, by number, at other places: the
/// tables are those of the outer data.
void share_fit_tables(search_data& data, const search_data& outer,
                      std::span<const std::int32_t> outer_entries);
/// Takes over the weights of the field records. Part of bind_kernels.
void weigh_counters(search_data& data);

/// Puts all counters to no steps, for a down-pass to count in.
void reset_counters(search_data& data);
/// Writes the cost of one more step to the fields of all characters, after such a pass.
void refresh_step_costs(search_data& data);
/// Has scans round costs by what steps cost on the tree in work. They give the same with other
/// units, but throw out fewer candidates at once.
void choose_cost_units(search_data& data);

/// The score by the counters as they are.
double total_fit(const search_data& data);

/// Counts the steps of joining two trees: those of the fields where the sets don't meet.
void add_attachment_steps(search_data& data, join_side clip, join_side main);
/// Takes them off again; returns what they cost. Afterwards the fit kernels give the cost of other
/// places beside the score of the two trees.
double remove_home_steps(search_data& data, join_side clip, join_side main);
/// Score of the tree if the clip, whose steps of joining aren't counted, were joined there. Summed
/// over all characters, so that no rounding piles up in long swaps.
double exact_score(search_data& data, join_side clip, join_side main);

}  // namespace zeb
