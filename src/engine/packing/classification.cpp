#include "engine/packing/classification.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "engine/fit/fit_curves.h"
#include "engine/packing/field_placement.h"
#include "matrix/character_steps.h"
#include "matrix/costs/character_costs.h"
#include "matrix/matrix.h"
#include "matrix/settings/character_settings.h"

namespace zeb {
namespace {

int group_of(const informative_states& states) {
  const int count = std::popcount(states.kept);
  if (states.additive || !states.edges.empty() || count <= 2) return 0;
  return count < 5 ? 1 : count < 9 ? 2 : 3;
}

/// Least and most steps of characters over the taxa of a request. Those over the active taxa are
/// known to the matrix.
class step_ranges {
 public:
  explicit step_ranges(const packing_request& request) : taxa_(at(matrix.ntax), 0) {
    for (const std::int32_t t : request.taxa) taxa_[at(t)] = 1;
    for (int t = 0; t < matrix.ntax; ++t)
      if (taxa_[at(t)] != matrix.taxon_active[at(t)]) as_active_ = false;
  }
  std::span<const std::uint8_t> taxa() const { return taxa_; }
  step_range of(int character) const {
    if (as_active_) return {minimum_steps(character), maximum_steps(character)};
    return steps_over_taxa(character, taxa_);
  }

 private:
  std::vector<std::uint8_t> taxa_;
  bool as_active_ = true;
};

pack_entry entry_of(int character, int weight, const informative_states& states,
                    const step_range& steps) {
  pack_entry e{};
  e.character = character;
  e.group = group_of(states);
  e.fields = !states.edges.empty() ? static_cast<int>(states.edges.size())
             : !states.additive || states.kept == 0
                 ? 1
                 : 31 - std::countl_zero(states.kept) - std::countr_zero(states.kept);
  e.repeat = 1;
  e.weight = weight;
  e.factor = 1;
  e.set = -1;
  e.internal_steps = matrix.characters[at(character)].internal_steps;
  e.min_steps = steps.least;
  e.max_steps = steps.most;
  return e;
}

const wide_kind* kind_of(const packing_request& request, int character) {
  for (const wide_kind* kind : request.wide_kinds)
    if (kind->takes(character)) return kind;
  return nullptr;
}

wide_character wide_character_of(int character, int weight, const step_range& steps) {
  wide_character c{};
  c.character = character;
  c.weight = weight;
  c.min_steps = steps.least;
  c.internal_steps = matrix.characters[at(character)].internal_steps;
  return c;
}

/// How a character with costs is scored by packed words: as an unordered one of a larger weight, or
/// by the edges of its tree of states. Neither: it needs its table.
struct reduced_form {
  int factor = 0;
  std::vector<std::uint32_t> edges;  // by the states of the matrix on the far side
  bool is_packed() const { return factor > 0 || !edges.empty(); }
};

reduced_form form_of(const packing_request& request, int character, int weight,
                     std::span<const std::uint8_t> taxa) {
  if (!matrix.characters[at(character)].is_sankoff) return {};
  const character_costs costs = costs_of_character(character, taxa);
  if (costs.root_states) return {};
  const bool fits = request.rules.on || std::int64_t{weight} * costs.common_cost <= largest_weight;
  if (costs.common_cost > 0 && fits) return {costs.common_cost, {}};
  reduced_form form;
  if (!matrix.decompose_state_trees) return form;
  for (const std::uint32_t far : costs.edges) form.edges.push_back(costs.in_matrix(far));
  return form;
}

/// The edges that some trees need fewer changes on than others. One that sets a single taxon apart
/// has a change on all trees: those are counted in `unique`.
informative_states trim_edges(const packing_request& request, int character,
                              const std::vector<std::uint32_t>& edges, int* unique) {
  informative_states states;
  *unique = 0;
  for (const std::uint32_t far : edges) {
    int before = 0;
    int beyond = 0;
    for (const std::int32_t t : request.taxa) {
      const std::uint32_t c = cell(t, character);
      if (says_nothing(character, c)) continue;
      states.kept |= c;
      before += (c & far) == 0;
      beyond += (c & ~far) == 0;
    }
    const int less = std::min(before, beyond);
    *unique += less == 1;
    if (less > 1) states.edges.push_back(far);
  }
  return states;
}

/// Implied weights: what the homoplasy of a character that is the same on all trees makes of the
/// fit.
void add_constant_fit(packing_plan& plan, const packing_request& request, int character,
                      double homoplasy) {
  const int weight = request.weights[at(character)];
  const int set = request.rules.set_of_character(character);
  if (set < 0)
    plan.base_fit += weight * request.rules.character_fit(character, homoplasy);
  else
    plan.base_set_sums[at(set)] += weight * std::round(parts_of_a_step * homoplasy);
}

/// A character that no tree can do better on than another.
void add_constant(packing_plan& plan, const packing_request& request, int character, int steps,
                  const wide_kind* kind) {
  const int weight = request.weights[at(character)];
  const int internal = matrix.characters[at(character)].internal_steps;
  const double unit = kind ? kind->unit : 1;
  const double homoplasy = internal + std::max(0, steps - homoplasy_base(character, steps)) * unit;
  if (request.rules.on) add_constant_fit(plan, request, character, homoplasy);
  if (!kind) {
    plan.base_steps += std::int64_t{weight} * steps;
    return;
  }
  plan.base_wide_cost += static_cast<double>(std::int64_t{weight} * steps) * kind->unit;
  plan.has_continuous = plan.has_continuous || kind->unit != 1;
}

void add_entry(packing_plan& plan, const packing_request& request, int character, int factor,
               informative_states states, const step_range& steps) {
  pack_entry e = entry_of(character, request.weights[at(character)], states, steps);
  (request.rules.on ? e.factor : e.weight) *= factor;
  if (request.rules.on) e.set = request.rules.set_of_character(character);
  plan.entries.push_back(e);
  plan.states.push_back(std::move(states));
}

void add_packed(packing_plan& plan, const packing_request& request, int character,
                const reduced_form& form, step_range steps) {
  if (form.edges.empty()) {
    add_entry(plan, request, character, std::max(1, form.factor),
              trim_states(character, request.taxa), steps);
    return;
  }
  int unique = 0;
  informative_states states = trim_edges(request, character, form.edges, &unique);
  if (states.edges.empty()) {
    add_constant(plan, request, character, unique, nullptr);
    return;
  }
  plan.base_steps += std::int64_t{request.weights[at(character)]} * unique;
  add_entry(plan, request, character, 1, std::move(states),
            {steps.least - unique, steps.most - unique});
}

}  // namespace

packing_plan plan_packing(const packing_request& request) {
  packing_plan plan;
  plan.implied_on = request.rules.on;
  plan.base_set_sums.resize(request.rules.sets.size(), 0);
  const step_ranges ranges(request);
  for (int c = 0; c < matrix.nchar; ++c) {
    const int weight = request.weights[at(c)];
    if (weight == 0) continue;
    if (matrix.characters[at(c)].type == landmark_data) {
      plan.has_landmarks = true;
      continue;
    }
    const reduced_form form = form_of(request, c, weight, ranges.taxa());
    const wide_kind* const kind = form.is_packed() ? nullptr : kind_of(request, c);
    step_range steps = ranges.of(c);
    if (steps.least >= steps.most) {
      add_constant(plan, request, c, steps.most, kind);
      continue;
    }
    steps.least = homoplasy_base(c, steps.least);
    if (kind) {
      const auto share = std::find_if(plan.wide.begin(), plan.wide.end(),
                                      [kind](const auto& s) { return s.kind == kind; });
      packing_plan::wide_share& own =
          share == plan.wide.end() ? plan.wide.emplace_back(packing_plan::wide_share{kind, {}})
                                   : *share;
      own.characters.push_back(wide_character_of(c, weight, steps));
      continue;
    }
    add_packed(plan, request, c, form, steps);
  }
  place_fields(plan, !request.long_words);
  return plan;
}

}  // namespace zeb
