#include "engine/packing/classification.h"

#include <algorithm>
#include <bit>

#include "base/errors.h"
#include "base/indices.h"
#include "engine/packing/field_placement.h"
#include "matrix/character_steps.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// Kinds that the passes can't score yet end the command rather than be left out.
void refuse_unavailable(int character) {
  const character_record& record = matrix.characters[at(character)];
  if (record.is_continuous)
    error_end("Searches with continuous characters are not available yet: deactivate character",
              character);
  if (record.type == landmark_data)
    error_end("Searches with landmark characters are not available yet: deactivate character",
              character);
  if (record.is_sankoff)
    error_end("Searches with step-matrix characters are not available yet: deactivate character",
              character);
}

int group_of(const informative_states& states) {
  const int count = std::popcount(states.kept);
  if (states.additive || count <= 2) return 0;
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
  e.fields = !states.additive || states.kept == 0
                 ? 1
                 : 31 - std::countl_zero(states.kept) - std::countr_zero(states.kept);
  e.repeat = 1;
  e.weight = weight;
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

/// A character that no tree can do better on than another.
void add_constant(packing_plan& plan, const packing_request& request, int character, int steps,
                  const wide_kind* kind) {
  const int weight = request.weights[at(character)];
  const int internal = matrix.characters[at(character)].internal_steps;
  plan.base_fit += weight * (internal / (request.concavity + internal));
  if (kind)
    plan.base_wide_cost += static_cast<double>(std::int64_t{weight} * steps) * kind->unit;
  else
    plan.base_steps += std::int64_t{weight} * steps;
}

}  // namespace

packing_plan plan_packing(const packing_request& request) {
  packing_plan plan;
  plan.implied_on = request.implied_on;
  const step_ranges ranges(request);
  for (int c = 0; c < matrix.nchar; ++c) {
    const int weight = request.weights[at(c)];
    if (weight == 0) continue;
    const wide_kind* const kind = kind_of(request, c);
    if (!kind) refuse_unavailable(c);
    const step_range steps = ranges.of(c);
    if (steps.least >= steps.most) {
      add_constant(plan, request, c, steps.most, kind);
      continue;
    }
    if (kind) {
      const auto share = std::find_if(plan.wide.begin(), plan.wide.end(),
                                      [kind](const auto& s) { return s.kind == kind; });
      packing_plan::wide_share& own =
          share == plan.wide.end() ? plan.wide.emplace_back(packing_plan::wide_share{kind, {}})
                                   : *share;
      own.characters.push_back(wide_character_of(c, weight, steps));
      continue;
    }
    plan.states.push_back(trim_states(c, request.taxa));
    plan.entries.push_back(entry_of(c, weight, plan.states.back(), steps));
  }
  place_fields(plan, !request.long_words);
  return plan;
}

}  // namespace zeb
