#include "engine/packing/informative_states.h"

#include <array>
#include <bit>

#include "matrix/matrix.h"

namespace zeb {
namespace {

std::uint32_t bit(int state) { return std::uint32_t{1} << state; }
int lowest(std::uint32_t states) { return std::countr_zero(states); }
int highest(std::uint32_t states) { return 31 - std::countl_zero(states); }

/// In how many taxa each state occurs, missing cells and those with all of `full` left out.
std::array<int, 32> occurrences(int character, std::span<const std::int32_t> taxa,
                                std::uint32_t full) {
  std::array<int, 32> count{};
  for (const int t : taxa) {
    const std::uint32_t c = cell(t, character);
    if (says_nothing(character, c) || (full != 0 && (c & full) == full)) continue;
    for (std::uint32_t rest = c; rest; rest &= rest - 1)
      ++count[static_cast<std::size_t>(lowest(rest))];
  }
  return count;
}

std::uint32_t states_with(const std::array<int, 32>& count, auto&& wanted) {
  std::uint32_t states = 0;
  for (int s = 0; s < 32; ++s)
    if (wanted(count[static_cast<std::size_t>(s)])) states |= bit(s);
  return states;
}

}  // namespace

informative_states trim_states(int character, std::span<const std::int32_t> taxa) {
  informative_states result;
  const character_record& record = matrix.characters[static_cast<std::size_t>(character)];
  result.additive = record.additive && !record.is_sankoff;
  std::array<int, 32> count = occurrences(character, taxa, 0);
  std::uint32_t observed = states_with(count, [](int n) { return n > 0; });
  if (!result.additive) {
    // A cell with every state there is can follow its neighbour for nothing, so it doesn't make
    // states occur; without such cells fewer states may be left, and so on, down to none.
    while (observed != result.full && observed != 0) {
      result.full = observed;
      count = occurrences(character, taxa, result.full);
      observed = states_with(count, [](int n) { return n > 0; });
    }
    result.unique = states_with(count, [](int n) { return n == 1; });
    result.kept = observed & ~result.unique;
    return result;
  }
  result.kept = observed;
  if (std::popcount(observed) < 2) return result;
  const auto trim = [&](int state) {
    // The remainder changes nothing: it tells the compiler that the place exists.
    if (count[static_cast<std::size_t>(state) % count.size()] == 1 &&
        std::popcount(result.kept) > 1) {
      result.unique |= bit(state);
      result.kept &= ~bit(state);
    }
  };
  trim(lowest(observed));
  trim(highest(observed));
  return result;
}

}  // namespace zeb
