#include "compare/state_numbers.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "compare/matching.h"
#include "language/name_matching.h"

namespace zeb {
namespace {

constexpr std::string_view stage = "comparing state names";

correspondence match_states(const data_character& first, const data_character& second,
                            bool by_similarity,
                            const std::function<bool(int, int)>& confirm = nullptr) {
  const auto named = [&](int i, int j) {
    return !first.states[at(i)].empty() && !second.states[at(j)].empty();
  };
  return match_names(
      first.states, second.states, {},
      {.by_similarity = by_similarity, .progress = stage, .compatible = named, .confirm = confirm});
}

int named_states(const data_character& character) {
  return static_cast<int>(
      std::ranges::count_if(character.states, [](const auto& name) { return !name.empty(); }));
}

// Of the states that nothing matches, those that have a name.
std::vector<int> named_only(std::vector<int> states, const std::vector<std::string>& names) {
  std::erase_if(states, [&names](int state) { return names[at(state)].empty(); });
  return states;
}

// The numbers of one set stay; what only the other one has comes after them.
void append_unmatched(const std::vector<int>& to_base, int base_states,
                      const std::vector<std::string>& names, std::vector<int>& base_numbers,
                      std::vector<int>& other_numbers) {
  base_numbers.resize(at(base_states));
  for (int s = 0; s < base_states; ++s) base_numbers[at(s)] = s;
  int next = base_states;
  other_numbers.clear();
  for (std::size_t s = 0; s < to_base.size(); ++s) {
    const bool is_new = to_base[s] < 0 && !names[s].empty();
    other_numbers.push_back(is_new ? next++ : to_base[s]);
  }
}

// A sequence may be longer at either end, but what both have must stand at like distances. True
// and the numbers where that is so.
bool align_sequences(const correspondence& found, const data_character& first,
                     const data_character& second, state_numbers& numbers) {
  int shift = 0;
  bool any = false;
  for (std::size_t i = 0; i < found.in_second.size(); ++i) {
    if (found.in_second[i] < 0) continue;
    const int here = found.in_second[i] - static_cast<int>(i);
    if (any && here != shift) return false;
    shift = here;
    any = true;
  }
  for (const int j : numbers.only_in_second) {
    const int place = j - shift;
    const bool is_taken =
        place >= 0 && at(place) < first.states.size() && !first.states[at(place)].empty();
    if (is_taken) return false;
  }
  const int start = std::max(shift, 0);  // where the first set's state 0 comes
  numbers.of_first.clear();
  numbers.of_second.clear();
  for (std::size_t i = 0; i < first.states.size(); ++i)
    numbers.of_first.push_back(static_cast<int>(i) + start);
  for (std::size_t j = 0; j < second.states.size(); ++j)
    numbers.of_second.push_back(static_cast<int>(j) - shift + start);
  return true;
}

void collect_names(const std::vector<std::string>& states, const std::vector<int>& of_states,
                   std::vector<std::string>& names) {
  for (std::size_t s = 0; s < states.size(); ++s) {
    const int number = of_states[s];
    if (number < 0 || number >= most_numbered_states || states[s].empty()) continue;
    if (at(number) >= names.size()) names.resize(at(number) + 1);
    if (names[at(number)].empty()) names[at(number)] = states[s];
  }
}

state_numbers unchanged_numbers() {
  state_numbers numbers;
  for (int s = 0; s < most_numbered_states; ++s) numbers.of_first.push_back(s);
  numbers.of_second = numbers.of_first;
  return numbers;
}

bool leave_out_overflow(std::vector<int>& numbers) {
  const auto too_high = [](int number) { return number >= most_numbered_states; };
  const bool any = std::ranges::any_of(numbers, too_high);
  std::ranges::replace_if(numbers, too_high, -1);
  return any;
}

}  // namespace

std::uint32_t renumbered(std::uint32_t states, const std::vector<int>& numbers) {
  std::uint32_t result = 0;
  for (std::uint32_t rest = states; rest; rest &= rest - 1) {
    const auto state = static_cast<std::size_t>(std::countr_zero(rest));
    const int number = state < numbers.size() ? numbers[state] : -1;
    if (number < 0) return missing_cell;
    result |= 1U << number;
  }
  return result;
}

state_numbers number_states(const data_character& first, const data_character& second,
                            const state_rules& rules) {
  if (!first.has_numbered_states()) return unchanged_numbers();
  const correspondence found = match_states(first, second, rules.by_similarity, rules.confirm);
  state_numbers numbers;
  for (const auto& pair : found.approximate)
    numbers.approximate.push_back({pair.first, pair.second});
  numbers.only_in_first = named_only(found.only_in_first(), first.states);
  numbers.only_in_second = named_only(found.only_in_second(), second.states);
  const int count = static_cast<int>(first.states.size());
  if (!rules.additive || !align_sequences(found, first, second, numbers)) {
    numbers.sequences_differ = rules.additive;
    const bool by_first =
        !rules.additive || !rules.keep_first_sequence || rules.keep_first_sequence();
    if (by_first) {
      append_unmatched(found.in_first, count, second.states, numbers.of_first, numbers.of_second);
    } else {
      append_unmatched(found.in_second, static_cast<int>(second.states.size()), first.states,
                       numbers.of_second, numbers.of_first);
    }
  }
  const bool first_overflows = leave_out_overflow(numbers.of_first);
  numbers.overflow = leave_out_overflow(numbers.of_second) || first_overflows;
  collect_names(first.states, numbers.of_first, numbers.names);
  collect_names(second.states, numbers.of_second, numbers.names);
  return numbers;
}

state_sketch::state_sketch(const data_character& character) {
  if (!character.has_numbered_states()) return;
  for (const std::string& name : character.states) {
    if (!name.empty()) names_.emplace_back(name);
  }
}

bool state_sketch::may_be_alike(const state_sketch& other) const {
  const auto has_match = [&other](const name_sketch& name) {
    return std::ranges::any_of(other.names_, [&name](const name_sketch& there) {
      return name.can_reach(matching.match_threshold, there);
    });
  };
  const auto fewer = static_cast<std::ptrdiff_t>(std::min(names_.size(), other.names_.size()));
  return fewer == 0 || 2 * std::ranges::count_if(names_, has_match) >= fewer;
}

bool states_are_alike(const data_character& first, const data_character& second,
                      bool by_similarity) {
  if (!first.has_numbered_states() || !second.has_numbered_states()) return true;
  const int fewer = std::min(named_states(first), named_states(second));
  if (fewer == 0) return true;
  return 2 * match_states(first, second, by_similarity).shared() >= fewer;
}

}  // namespace zeb
