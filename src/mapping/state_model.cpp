#include "mapping/state_model.h"

#include <algorithm>
#include <bit>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// States that a cell with these may have: an ordered character's cell is the range of them.
std::uint32_t widened(std::uint32_t states, bool additive) {
  if (!additive || states == 0) return states;
  const int lowest = std::countr_zero(states);
  const int highest = 31 - std::countl_zero(states);
  return ((std::uint32_t{2} << highest) - 1) & ~((std::uint32_t{1} << lowest) - 1);
}

}  // namespace

state_model::state_model(int character) : character_(character) {
  const character_record& record = matrix.characters[at(character)];
  ALWAYS_CHECK(record.type != landmark_data, "landmarks have no states");
  if (record.is_continuous)
    take_ranges();
  else if (record.is_sankoff)
    take_costs();
  else
    take_states();
}

void state_model::take_costs() {
  has_costs_ = true;
  costs_ = costs_of_character(character_);
  if (costs_.observed == 0) return;
  values_ = costs_.states;
  cells_.reserve(at(matrix.ntax) * size());
  for (const std::uint32_t cell_states : std::span(costs_.cells).first(at(matrix.ntax)))
    for (std::size_t i = 0; i < size(); ++i)
      cells_.push_back(cell_states == 0 || (cell_states >> i & 1U) != 0);
}

void state_model::take_states() {
  const bool additive = matrix.characters[at(character_)].additive;
  is_unordered_ = !additive;
  const silent_pattern silent = silent_pattern_of(character_);
  std::uint32_t observed = 0;
  std::vector<std::uint32_t> cells;
  for (int t = 0; t < matrix.ntax; ++t) {
    const std::uint32_t states = cell(t, character_);
    cells.push_back(silent.matches(states) ? 0 : widened(states, additive));
    observed |= cells.back();
  }
  observed = widened(observed, additive);
  for (; observed; observed &= observed - 1) values_.push_back(std::countr_zero(observed));
  cells_.reserve(cells.size() * size());
  for (const std::uint32_t states : cells)
    for (const int state : values_) cells_.push_back(states == 0 || (states >> state & 1U) != 0);
}

void state_model::take_ranges() {
  const silent_pattern silent = silent_pattern_of(character_);
  for (int t = 0; t < matrix.ntax; ++t) {
    if (silent.matches(cell(t, character_))) continue;
    const continuous_cell range = read_continuous_cell(t, character_);
    values_.insert(values_.end(), {range.low, range.high});
  }
  std::sort(values_.begin(), values_.end());
  values_.erase(std::unique(values_.begin(), values_.end()), values_.end());
  cells_.reserve(at(matrix.ntax) * size());
  for (int t = 0; t < matrix.ntax; ++t) {
    const bool says_nothing = silent.matches(cell(t, character_));
    const continuous_cell range = read_continuous_cell(t, character_);
    for (const int value : values_)
      cells_.push_back(says_nothing || (value >= range.low && value <= range.high));
  }
}

std::int64_t state_model::cost_at_root(std::size_t i) const {
  const bool allowed = costs_.root_states == 0 || (costs_.root_states >> i & 1U) != 0;
  return allowed ? 0 : forbidden_cost;
}

}  // namespace zeb
