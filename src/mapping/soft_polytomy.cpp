#include "mapping/soft_polytomy.h"

#include <algorithm>
#include <bit>

namespace zeb {
namespace {

using branch_costs = std::span<const std::span<const std::int64_t>>;

constexpr std::size_t most_branches = 9;  // resolved: 3 to the power of them ways to divide them
constexpr std::size_t most_values = 12;   // unordered: 2 to the power of them sets

void lower(std::int64_t& cost, std::int64_t other) { cost = std::min(cost, other); }

soft_costs no_costs(std::size_t values, std::size_t branches) {
  return {std::vector<std::int64_t>(values, impossible_cost),
          std::vector<std::vector<std::int64_t>>(
              branches, std::vector<std::int64_t>(values, impossible_cost))};
}

/// What the branches cost at best, for a set of values that a resolution has.
class joined_values {
 public:
  joined_values(branch_costs from_above, std::span<const std::int64_t> outside)
      : from_above_(from_above), outside_(outside), least_(from_above.size()) {
    clear();
  }
  void clear() {
    std::fill(least_.begin(), least_.end(), impossible_cost);
    least_outside_ = impossible_cost;
  }
  void add(std::size_t value) {
    for (std::size_t d = 0; d < least_.size(); ++d) lower(least_[d], from_above_[d][value]);
    if (!outside_.empty()) lower(least_outside_, outside_[value]);
  }
  std::int64_t all() const {
    std::int64_t sum = 0;
    for (const std::int64_t one : least_) sum += one;
    return sum;
  }
  std::int64_t branch(std::size_t d) const { return least_[d]; }
  std::int64_t outside() const { return least_outside_; }
  /// What it costs more if some branch other than `without` has to be at the value.
  std::int64_t more_with_one_at(std::size_t value, std::size_t without) const {
    std::int64_t more = impossible_cost;
    for (std::size_t d = 0; d < least_.size(); ++d)
      if (d != without) lower(more, from_above_[d][value] - least_[d]);
    return more;
  }

 private:
  branch_costs from_above_;
  std::span<const std::int64_t> outside_;
  std::vector<std::int64_t> least_;  // by branch
  std::int64_t least_outside_ = impossible_cost;
};

constexpr std::size_t no_branch = static_cast<std::size_t>(-1);

/// A value at the end of those joined, with `joining` as the sum of what joins them. No node of a
/// resolution has a single descendant: one at the end must have a branch of its own, and for a
/// branch to have its foot there another one must. The base may be the foot itself, or any of the
/// others, where what is beyond costs `outside_of_others`.
void take_end(branch_costs from_above, std::span<const std::int64_t> outside,
              const joined_values& joined, std::size_t value, std::int64_t joining,
              std::int64_t outside_of_others, soft_costs& costs) {
  const std::int64_t all = joining + joined.all();
  lower(costs.own[value], all + joined.more_with_one_at(value, no_branch));
  for (std::size_t d = 0; d < from_above.size() && !outside.empty(); ++d) {
    const std::int64_t rest = all - joined.branch(d);
    lower(costs.rest[d][value], rest + outside[value]);
    lower(costs.rest[d][value], rest + outside_of_others + joined.more_with_one_at(value, d));
  }
}

/// The same for a single value: all branches and the base have it.
void take_only(branch_costs from_above, std::span<const std::int64_t> outside,
               const joined_values& joined, std::size_t value, soft_costs& costs) {
  lower(costs.own[value], joined.all());
  for (std::size_t d = 0; d < from_above.size() && !outside.empty(); ++d)
    lower(costs.rest[d][value], joined.all() - joined.branch(d) + outside[value]);
}

/// Of more than two values any may be in the middle.
soft_costs join_sets(const state_model& model, branch_costs from_above,
                     std::span<const std::int64_t> outside) {
  const std::size_t n = model.size();
  soft_costs costs = no_costs(n, from_above.size());
  joined_values joined(from_above, outside);
  for (std::size_t set = 1; set < std::size_t{1} << n; ++set) {
    joined.clear();
    for (std::size_t i = 0; i < n; ++i)
      if (set >> i & 1U) joined.add(i);
    const int steps = std::popcount(set) - 1;
    for (std::size_t i = 0; i < n; ++i) {
      if (!(set >> i & 1U)) continue;
      if (steps == 0) take_only(from_above, outside, joined, i, costs);
      if (steps == 1) {
        const auto other = static_cast<std::size_t>(std::countr_zero(set & ~(std::size_t{1} << i)));
        take_end(from_above, outside, joined, i, steps, outside.empty() ? 0 : outside[other],
                 costs);
      }
      if (steps < 2) continue;
      lower(costs.own[i], steps + joined.all());
      for (std::size_t d = 0; d < from_above.size() && !outside.empty(); ++d)
        lower(costs.rest[d][i], steps + joined.all() - joined.branch(d) + joined.outside());
    }
  }
  return costs;
}

/// Least of `outside` over a range of values.
std::int64_t least_outside(std::span<const std::int64_t> outside, std::size_t first,
                           std::size_t end) {
  if (outside.empty()) return 0;
  std::int64_t least = impossible_cost;
  for (std::size_t i = first; i < end; ++i) lower(least, outside[i]);
  return least;
}

/// From each lowest value up; then each value takes the best of the ranges that it is within.
soft_costs join_ranges(const state_model& model, branch_costs from_above,
                       std::span<const std::int64_t> outside) {
  const std::size_t n = model.size();
  const std::size_t wanted = outside.empty() ? 0 : from_above.size();
  soft_costs costs = no_costs(n, from_above.size());
  joined_values joined(from_above, outside);
  for (std::size_t low = 0; low < n; ++low) {
    joined.clear();
    soft_costs up_to = no_costs(n, from_above.size());  // by the highest value
    for (std::size_t high = low; high < n; ++high) {
      const std::int64_t outside_of_others = joined.outside();
      joined.add(high);
      if (high == low) {
        take_only(from_above, outside, joined, low, costs);
        continue;
      }
      const std::int64_t width = model.value(high) - model.value(low);
      take_end(from_above, outside, joined, high, width, outside_of_others, costs);
      take_end(from_above, outside, joined, low, width, least_outside(outside, low + 1, high + 1),
               costs);
      up_to.own[high] = width + joined.all();
      for (std::size_t d = 0; d < wanted; ++d)
        up_to.rest[d][high] = width + joined.all() - joined.branch(d) + joined.outside();
    }
    const auto take = [&](std::vector<std::int64_t>& best, const std::vector<std::int64_t>& ends) {
      std::int64_t around = impossible_cost;
      for (std::size_t i = n - 1; i > low; --i) {
        lower(best[i], around);
        lower(around, ends[i]);
      }
    };
    take(costs.own, up_to.own);
    for (std::size_t d = 0; d < wanted; ++d) take(costs.rest[d], up_to.rest[d]);
  }
  return costs;
}

/// By set of branches, then value: of the node at the base of their best tree, of its ancestor.
struct best_trees {
  std::vector<std::int64_t> own;
  std::vector<std::int64_t> above;
};

best_trees find_best_trees(const state_model& model, branch_costs from_above) {
  const std::size_t n = model.size();
  const std::size_t sets = std::size_t{1} << from_above.size();
  best_trees trees{std::vector<std::int64_t>(sets * n, impossible_cost),
                   std::vector<std::int64_t>(sets * n, impossible_cost)};
  for (std::size_t set = 1; set < sets; ++set) {
    std::int64_t* const above = &trees.above[set * n];
    if (std::has_single_bit(set)) {
      const auto& only = from_above[static_cast<std::size_t>(std::countr_zero(set))];
      std::copy(only.begin(), only.end(), above);
      continue;
    }
    std::int64_t* const own = &trees.own[set * n];
    for (std::size_t part = (set - 1) & set; part > (set ^ part); part = (part - 1) & set)
      for (std::size_t i = 0; i < n; ++i)
        lower(own[i], trees.above[part * n + i] + trees.above[(set ^ part) * n + i]);
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j) lower(above[i], model.cost(i, j) + own[j]);
  }
  return trees;
}

/// From the whole set to its parts: a part hangs on a node whose other part costs what it costs,
/// and beyond which is what is beyond the set.
soft_costs resolve(const state_model& model, branch_costs from_above,
                   std::span<const std::int64_t> outside) {
  const std::size_t n = model.size();
  const std::size_t sets = std::size_t{1} << from_above.size();
  const best_trees trees = find_best_trees(model, from_above);
  soft_costs costs;
  costs.own.assign(trees.own.end() - static_cast<std::ptrdiff_t>(n), trees.own.end());
  if (outside.empty()) return costs;
  std::vector<std::int64_t> at_base(sets * n, impossible_cost);
  std::vector<std::int64_t> at_foot(sets * n, impossible_cost);
  std::copy(outside.begin(), outside.end(), at_base.end() - static_cast<std::ptrdiff_t>(n));
  costs.rest.resize(from_above.size());
  for (std::size_t set = sets - 1; set > 0; --set) {
    const std::int64_t* const foot = &at_foot[set * n];
    std::int64_t* const base = &at_base[set * n];
    if (std::has_single_bit(set)) {
      costs.rest[static_cast<std::size_t>(std::countr_zero(set))].assign(foot, foot + n);
      continue;
    }
    for (std::size_t i = 0; i < n && set != sets - 1; ++i)
      for (std::size_t j = 0; j < n; ++j) lower(base[j], foot[i] + model.cost(i, j));
    for (std::size_t part = (set - 1) & set; part > 0; part = (part - 1) & set)
      for (std::size_t i = 0; i < n; ++i)
        lower(at_foot[part * n + i], base[i] + trees.above[(set ^ part) * n + i]);
  }
  return costs;
}

bool has_few_values(const state_model& model) {
  return model.is_unordered() && model.size() <= most_values;
}

}  // namespace

bool can_resolve(const state_model& model, std::size_t branches) {
  return has_few_values(model) || model.is_ordered() || branches <= most_branches;
}

soft_costs resolve_polytomy(const state_model& model, branch_costs from_above,
                            std::span<const std::int64_t> outside) {
  if (has_few_values(model)) return join_sets(model, from_above, outside);
  if (model.is_ordered()) return join_ranges(model, from_above, outside);
  return resolve(model, from_above, outside);
}

}  // namespace zeb
