#include "engine/packing/classification.h"

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

}  // namespace

packing_plan plan_packing(const packing_request& request) {
  packing_plan plan;
  plan.implied_on = request.implied_on;
  const step_ranges ranges(request);
  for (int c = 0; c < matrix.nchar; ++c) {
    const int weight = request.weights[at(c)];
    if (weight == 0) continue;
    refuse_unavailable(c);
    const step_range steps = ranges.of(c);
    if (steps.least >= steps.most) {
      const int internal = matrix.characters[at(c)].internal_steps;
      plan.base_steps += std::int64_t{weight} * steps.most;
      plan.base_fit += weight * (internal / (request.concavity + internal));
      continue;
    }
    plan.states.push_back(trim_states(c, request.taxa));
    plan.entries.push_back(entry_of(c, weight, plan.states.back(), steps));
  }
  place_fields(plan, !request.long_words);
  return plan;
}

}  // namespace zeb
