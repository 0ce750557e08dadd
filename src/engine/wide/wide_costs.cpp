#include "engine/wide/wide_costs.h"

#include <algorithm>
#include <cmath>

#include "base/indices.h"
#include "engine/fit/fit_curves.h"
#include "engine/fit/step_costs.h"

namespace zeb {
namespace {

wide_operand operand_of(const wide_data& wide, join_side side) {
  switch (side.end) {
    case join_end::root:
      return {side.end, wide.down + at(side.number) * wide.down_words};
    case join_end::branch:
      return {side.end, wide.branch + at(side.number) * wide.branch_words};
    case join_end::final:
      return {side.end, wide.final + at(side.number) * wide.final_words};
    case join_end::cluster:
      break;
  }
  return {side.end, wide.cluster + at(side.number) * wide.branch_words};
}

double homoplasy_of(const wide_part& part, const wide_character& c, std::int64_t steps) {
  const double extra = static_cast<double>(steps - c.min_steps) * part.kind->unit;
  return std::max(0.0, extra) + c.internal_steps;
}

/// The same in whole parts of a step, as sets are summed.
double homoplasy_in_set(const wide_part& part, const wide_character& c, std::int64_t steps) {
  return std::round(parts_of_a_step * homoplasy_of(part, c, steps));
}

double fit_of(const wide_part& part, const wide_character& c, std::int64_t steps) {
  return fit_at(c.curve, homoplasy_of(part, c, steps));
}

/// Cost of `steps` more in the joining that the kernel costed last.
double cost_in_joining(const search_data& data, const wide_part& part, const wide_character& c,
                       std::int64_t steps) {
  const double cost = cost_of_wide_steps(data, part, c, steps);
  if (c.set < 0 || !data.implied_on) return cost;
  return join_set(data.fit_sets[at(c.set)], *data.layout.fits.joining, cost);
}

/// Calls `visit` with each character and its steps of joining.
template <class function>
void for_steps_of_joining(const search_data& data, join_side clip, join_side main, function visit) {
  const wide_operand a = operand_of(data.wide, clip);
  const wide_operand b = operand_of(data.wide, main);
  for (const wide_part& part : data.wide.parts) {
    std::fill(data.wide.steps.begin(), data.wide.steps.end(), 0);
    part.kind->join(part.characters, a, b, data.wide.steps.data());
    for (std::size_t i = 0; i < part.characters.size(); ++i)
      visit(part, part.characters[i], data.wide.steps[i]);
  }
}

}  // namespace

double wide_join_cost(const search_data& data, join_side clip, join_side main, double bound) {
  const wide_operand a = operand_of(data.wide, clip);
  const wide_operand b = operand_of(data.wide, main);
  double cost = 0;
  for (const wide_part& part : data.wide.parts) {
    if (part.kind->join_sum && !data.implied_on) {
      constexpr double most_steps = 1e15;
      const double left = std::min(most_steps, (bound - cost) / part.kind->unit + 1e-3);
      const std::int64_t steps =
          part.kind->join_sum(part.characters, a, b, static_cast<std::int64_t>(left));
      cost += static_cast<double>(steps) * part.kind->unit;
      if (cost > bound) return cost;
      continue;
    }
    const std::size_t together = at(part.kind->together);
    for (std::size_t i = 0; i < part.characters.size(); i += together) {
      const std::size_t count = std::min(together, part.characters.size() - i);
      const wide_characters piece = part.characters.subspan(i, count);
      std::fill_n(data.wide.steps.begin(), count, 0);
      part.kind->join(piece, a, b, data.wide.steps.data());
      for (std::size_t k = 0; k < count; ++k)
        if (data.wide.steps[k] != 0)
          cost += cost_in_joining(data, part, piece[k], data.wide.steps[k]);
      if (cost > bound) return cost;
    }
  }
  return cost;
}

void wide_join_steps(const search_data& data, join_side clip, join_side main,
                     std::vector<std::int64_t>& steps) {
  steps.clear();
  for_steps_of_joining(
      data, clip, main,
      [&](const wide_part&, const wide_character&, std::int64_t own) { steps.push_back(own); });
}

double cost_of_wide_steps(const search_data& data, const wide_part& part, const wide_character& c,
                          std::int64_t steps) {
  if (!data.implied_on) return static_cast<double>(c.weight * steps) * part.kind->unit;
  if (c.set < 0) return c.weight * (fit_of(part, c, c.steps + steps) - c.here);
  return c.weight *
         (homoplasy_in_set(part, c, c.steps + steps) - homoplasy_in_set(part, c, c.steps));
}

double wide_change_above(const search_data& data, int node) {
  const join_side own{node < data.n ? join_end::root : join_end::final, node};
  double sum = 0;
  for_steps_of_joining(data, own, {join_end::final, data.tree.anc[at(node)]},
                       [&](const wide_part& part, const wide_character& c, std::int64_t steps) {
                         sum += static_cast<double>(c.weight * steps) * part.kind->unit;
                       });
  return sum;
}

namespace {

/// Moves the steps of all characters by what joining costs, times `change`. Returns what that makes
/// the fit lower.
double move_wide_steps(search_data& data, join_side clip, join_side main, int change) {
  double cost = 0;
  bool sets_moved = false;
  for_steps_of_joining(
      data, clip, main, [&](const wide_part& part, wide_character& c, std::int64_t steps) {
        if (steps == 0) return;
        if (c.set >= 0) {
          data.fit_sets[at(c.set)].sum += cost_of_wide_steps(data, part, c, change * steps);
          sets_moved = true;
        }
        const double before = c.here;
        c.steps += change * steps;
        if (c.set >= 0) return;
        c.here = fit_of(part, c, c.steps);
        cost += c.weight * (before - c.here);
      });
  if (!sets_moved) return cost;
  for (set_counter& set : data.fit_sets) {
    const double before = set.here;
    refresh_set(data.layout, set);
    cost += before - set.here;
  }
  return cost;
}

}  // namespace

void add_wide_steps(search_data& data, join_side clip, join_side main) {
  move_wide_steps(data, clip, main, 1);
}

double remove_wide_steps(search_data& data, join_side clip, join_side main) {
  return move_wide_steps(data, clip, main, -1);
}

void reset_wide_steps(search_data& data) {
  for (wide_part& part : data.wide.parts)
    for (wide_character& c : part.characters) c.steps = 0;
}

void add_wide_to_sets(search_data& data) {
  for (const wide_part& part : data.wide.parts)
    for (const wide_character& c : part.characters)
      if (c.set >= 0) data.fit_sets[at(c.set)].sum += c.weight * homoplasy_in_set(part, c, c.steps);
}

void refresh_wide_fits(search_data& data) {
  for (wide_part& part : data.wide.parts)
    for (wide_character& c : part.characters)
      if (c.set < 0) c.here = fit_of(part, c, c.steps);
}

double total_wide_fit(const search_data& data) {
  double sum = 0;
  for (const wide_part& part : data.wide.parts)
    for (const wide_character& c : part.characters)
      if (c.set < 0) sum += c.weight * c.here;
  return sum;
}

}  // namespace zeb
