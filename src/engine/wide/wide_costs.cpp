#include "engine/wide/wide_costs.h"

#include <algorithm>

#include "base/indices.h"

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

/// Unweighted fit of a character with so many steps.
double fit_of(const search_data& data, const wide_part& part, const wide_character& c,
              std::int64_t steps) {
  const double extra = static_cast<double>(steps - c.min_steps) * part.kind->unit;
  const double h = std::max(0.0, extra + c.internal_steps);
  return h / (data.concavity + h);
}

double cost_of_steps(const search_data& data, const wide_part& part, const wide_character& c,
                     std::int64_t steps) {
  if (!data.implied_on) return static_cast<double>(c.weight * steps) * part.kind->unit;
  return c.weight * (fit_of(data, part, c, c.steps + steps) - fit_of(data, part, c, c.steps));
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
          cost += cost_of_steps(data, part, piece[k], data.wide.steps[k]);
      if (cost > bound) return cost;
    }
  }
  return cost;
}

void wide_join_costs(const search_data& data, join_side clip, join_side main,
                     std::vector<double>& costs) {
  costs.clear();
  for_steps_of_joining(data, clip, main,
                       [&](const wide_part& part, const wide_character& c, std::int64_t steps) {
                         costs.push_back(cost_of_steps(data, part, c, steps));
                       });
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

void add_wide_steps(search_data& data, join_side clip, join_side main) {
  for_steps_of_joining(
      data, clip, main,
      [](const wide_part&, wide_character& c, std::int64_t steps) { c.steps += steps; });
}

double remove_wide_steps(search_data& data, join_side clip, join_side main) {
  double cost = 0;
  for_steps_of_joining(data, clip, main,
                       [&](const wide_part& part, wide_character& c, std::int64_t steps) {
                         c.steps -= steps;
                         cost += cost_of_steps(data, part, c, steps);
                       });
  return cost;
}

void reset_wide_steps(search_data& data) {
  for (wide_part& part : data.wide.parts)
    for (wide_character& c : part.characters) c.steps = 0;
}

double total_wide_fit(const search_data& data) {
  double sum = 0;
  for (const wide_part& part : data.wide.parts)
    for (const wide_character& c : part.characters)
      sum += c.weight * fit_of(data, part, c, c.steps);
  return sum;
}

}  // namespace zeb
