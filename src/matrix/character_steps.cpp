// Non-additive: the minimum is one less than the fewest states that meet every cell; the maximum is
// the length on the bush, the tree without internal branches, where the root takes the state found
// in most cells. Additive and continuous: a cell is the range of its states; the minimum is the gap
// between the lowest upper end and the highest lower end, the maximum again the length on the bush,
// with the root at a median of the ends.
#include "matrix/character_steps.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <vector>

#include "base/indices.h"
#include "matrix/costs/cost_steps.h"
#include "matrix/hooks.h"
#include "matrix/smallest_hitting_set.h"
#include "matrix/symbols.h"

namespace zeb {
namespace {

template <class function>
void for_each_telling_cell(int character, std::span<const std::uint8_t> taxa, function visit) {
  for (int t = 0; t < matrix.ntax; ++t) {
    if (!taxa[at(t)]) continue;
    const std::uint32_t states = cell(t, character);
    if (!says_nothing(character, states)) visit(states);
  }
}

// "*" is every state but the highest: it says something where that one occurs.
void note_top_state(int character) {
  character_record& record = matrix.characters[at(character)];
  if (record.type != numeric_data) return;
  const std::uint32_t top = matrix.state_mask ^ (matrix.state_mask >> 1);
  record.top_state_used = 0;
  for (int t = 0; t < matrix.ntax && !record.top_state_used; ++t) {
    const std::uint32_t states = cell(t, character);
    record.top_state_used = states != matrix.state_mask && (states & top) != 0;
  }
}

struct value_range {
  int low;
  int high;
};

step_range steps_of_ranges(std::vector<value_range>& ranges) {
  if (ranges.empty()) return {};
  int lowest_high = ranges.front().high;
  int highest_low = ranges.front().low;
  std::vector<int> ends;
  ends.reserve(2 * ranges.size());
  for (const value_range& r : ranges) {
    lowest_high = std::min(lowest_high, r.high);
    highest_low = std::max(highest_low, r.low);
    ends.push_back(r.low);
    ends.push_back(r.high);
  }
  const auto middle = ends.begin() + static_cast<std::ptrdiff_t>(ranges.size());
  std::nth_element(ends.begin(), middle, ends.end());
  const int root = *middle;
  long long most = 0;
  for (const value_range& r : ranges) {
    most += root < r.low ? r.low - root : root > r.high ? root - r.high : 0;
  }
  constexpr long long ceiling = 2147483647;
  return {std::max(0, highest_low - lowest_high), static_cast<int>(std::min(most, ceiling))};
}

step_range continuous_steps(int character, std::span<const std::uint8_t> taxa) {
  std::vector<value_range> ranges;
  for_each_telling_cell(character, taxa, [&](std::uint32_t states) {
    ranges.push_back({static_cast<int>(states & 0xffffU), static_cast<int>(states >> 16)});
  });
  return steps_of_ranges(ranges);
}

step_range additive_steps(int character, std::span<const std::uint8_t> taxa) {
  std::vector<value_range> ranges;
  for_each_telling_cell(character, taxa, [&](std::uint32_t states) {
    ranges.push_back({std::countr_zero(states), 31 - std::countl_zero(states)});
  });
  return steps_of_ranges(ranges);
}

step_range nonadditive_steps(int character, std::span<const std::uint8_t> taxa) {
  std::array<int, 32> in_cells{};
  std::vector<std::uint32_t> sets;  // polymorphic cells; single states are in `single`
  std::uint32_t single = 0;
  int cells = 0;
  for_each_telling_cell(character, taxa, [&](std::uint32_t states) {
    ++cells;
    if (std::has_single_bit(states)) {
      single |= states;
    } else if (sets.empty() || sets.back() != states) {
      sets.push_back(states);
    }
    for (std::uint32_t rest = states; rest; rest &= rest - 1) {
      ++in_cells[at(std::countr_zero(rest))];
    }
  });
  if (cells == 0) return {};
  std::erase_if(sets, [single](std::uint32_t s) { return (s & single) != 0; });
  const int others = matrix.exact_min_steps ? smallest_hitting_set(std::move(sets))
                                            : greedy_hitting_set(std::move(sets));
  return {std::popcount(single) + others - 1,
          cells - *std::max_element(in_cells.begin(), in_cells.end())};
}

std::span<const std::uint8_t> current_taxa() { return matrix.taxon_active.first(at(matrix.ntax)); }

void recheck(int character) {
  character_record& record = matrix.characters[at(character)];
  const step_range range = steps_over_taxa(character, current_taxa());
  record.min_steps = range.least;
  record.max_steps = range.most;
  record.observed = 0;
  if (!record.is_continuous) {
    for_each_telling_cell(character, current_taxa(),
                          [&](std::uint32_t states) { record.observed |= states; });
  }
  record.needs_recheck = 0;
}

// Has every character computed again when the active taxa aren't those that the records were made
// for.
void notice_changed_taxa() {
  const auto taxa = current_taxa();
  std::vector<std::uint8_t>& known = matrix.taxa_of_steps;
  if (std::equal(taxa.begin(), taxa.end(), known.begin(), known.end())) return;
  known.assign(taxa.begin(), taxa.end());
  for (character_record& record : matrix.characters) record.needs_recheck = 1;
}

}  // namespace

step_range steps_over_taxa(int character, std::span<const std::uint8_t> taxa) {
  const character_record& record = matrix.characters[at(character)];
  if (record.type == landmark_data) return {};
  if (record.is_continuous) return continuous_steps(character, taxa);
  note_top_state(character);
  if (record.is_sankoff) return cost_steps(character, taxa);
  return record.additive ? additive_steps(character, taxa) : nonadditive_steps(character, taxa);
}

length_range lengths_over_taxa(int character, std::span<const std::uint8_t> taxa) {
  const character_record& record = matrix.characters[at(character)];
  if (record.type == landmark_data) {
    if (!hooks_of_matrix.landmark_lengths) return {};
    length_range found;
    hooks_of_matrix.landmark_lengths(character, taxa, &found.least, &found.most);
    return found;
  }
  const step_range range = steps_over_taxa(character, taxa);
  const double unit = record.is_continuous ? 0.001 : 1.0;
  return {range.least * unit, range.most * unit};
}

length_range lengths_over_active_taxa(int character) {
  const character_record& record = matrix.characters[at(character)];
  if (record.type == landmark_data) return lengths_over_taxa(character, current_taxa());
  const double unit = record.is_continuous ? 0.001 : 1.0;
  return {minimum_steps(character) * unit, maximum_steps(character) * unit};
}

void recheck_steps() {
  notice_changed_taxa();
  for (int c = 0; c < matrix.nchar; ++c) {
    if (matrix.characters[at(c)].needs_recheck) recheck(c);
  }
}

void forget_steps(int character) { matrix.characters[at(character)].needs_recheck = 1; }

int minimum_steps(int character) {
  notice_changed_taxa();
  if (matrix.characters[at(character)].needs_recheck) recheck(character);
  return matrix.characters[at(character)].min_steps;
}

int maximum_steps(int character) {
  notice_changed_taxa();
  if (matrix.characters[at(character)].needs_recheck) recheck(character);
  return matrix.characters[at(character)].max_steps;
}

int homoplasy_base(int character, int least) {
  const character_record& record = matrix.characters[at(character)];
  return record.is_sankoff && record.user_min_steps >= 0 ? record.user_min_steps : least;
}

bool is_informative(int character) {
  if (matrix.characters[at(character)].type == landmark_data) {
    const length_range range = lengths_over_active_taxa(character);
    return range.most > range.least * (1 + 1e-9);
  }
  return maximum_steps(character) > minimum_steps(character);
}

}  // namespace zeb
