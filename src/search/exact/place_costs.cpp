#include "search/exact/place_costs.h"

#include <algorithm>

#include "base/indices.h"
#include "engine/fit/implied_weighting.h"
#include "engine/joining.h"

namespace zeb {
namespace {

constexpr double most_steps = 1e9;  // above all sums of weights

}  // namespace

place_costs::place_costs(search_context& context)
    : context_(context),
      data_(context.data),
      rounding_(tolerance_of(kind_of_scores(context.data))) {
  if (context.constraints_in_force)
    groups_.emplace(context.constraints_in_force->rows(), data_.nodes);
}

void place_costs::read_tree() {
  if (groups_) groups_->read_growing_tree(data_.tree);
}

/// Is the cost within the limit with the wide characters, too?
bool place_costs::wide_allow(int taxon, int branch, double allowed, double* cost) const {
  if (!data_.has_wide) return true;
  *cost +=
      wide_join_cost(data_, {join_end::root, taxon}, {join_end::branch, branch}, allowed - *cost);
  return *cost <= allowed;
}

bool place_costs::is_forbidden(int taxon, int branch) const {
  return (groups_ && !groups_->allows(taxon, branch)) ||
         (context_.slots.forbids && context_.slots.forbids(data_, taxon, taxon, branch));
}

double place_costs::cost_at(int taxon, const word* words, int branch, double allowed) const {
  const word* const there = branch_sets(branch);
  double cost =
      data_.implied_on
          ? data_.kernels.fit.cost_pair(words, there, data_.layout, allowed + rounding_)
          : data_.kernels.cost_pair(words, there, data_.layout,
                                    static_cast<std::int32_t>(std::min(allowed, most_steps)));
  if (cost <= allowed) wide_allow(taxon, branch, allowed, &cost);
  return cost;
}

void place_costs::count_steps(int taxon, const word* words, int branch) const {
  if (!data_.implied_on) return;
  data_.kernels.fit.add_steps(words, branch_sets(branch), data_.layout);
  if (data_.has_wide) add_wide_steps(data_, {join_end::root, taxon}, {join_end::branch, branch});
}

void place_costs::uncount_steps(int taxon, const word* words, int branch) const {
  if (!data_.implied_on) return;
  data_.kernels.fit.remove_steps(words, branch_sets(branch), data_.layout);
  if (data_.has_wide) remove_wide_steps(data_, {join_end::root, taxon}, {join_end::branch, branch});
}

double place_costs::drop_dear(int taxon, const word* words, double allowed, std::int32_t* places,
                              int* count) const {
  int kept = 0;
  double least = no_bound;
  for (int i = 0; i < *count; ++i) {
    double cost = 0;
    if (data_.implied_on) {
      i = data_.kernels.fit.scan_pairs(words, data_.branch_base, data_.set_stride, places, i,
                                       *count, data_.layout, allowed + rounding_, &cost);
    } else {
      std::int32_t steps = 0;
      i = data_.kernels.scan_pairs(
          words, data_.branch_base, data_.set_stride, places, i, *count, data_.layout,
          static_cast<std::int32_t>(std::min(allowed, most_steps)), &steps);
      cost = steps;
    }
    if (i >= *count) break;
    if (!wide_allow(taxon, places[i], allowed, &cost)) continue;
    least = std::min(least, cost);
    places[kept++] = places[i];
  }
  context_.rearrangements.add(static_cast<std::uint64_t>(*count));
  *count = kept;
  return least;
}

void place_costs::drop_forbidden(int taxon, std::int32_t* places, int* count) const {
  if (!groups_ && !context_.slots.forbids) return;
  std::int32_t* const end = std::remove_if(places, places + *count,
                                           [&](std::int32_t v) { return is_forbidden(taxon, v); });
  *count = static_cast<int>(end - places);
}

}  // namespace zeb
