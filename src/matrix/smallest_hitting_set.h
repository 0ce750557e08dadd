// The fewest states that give every cell at least one of its own.
#pragma once

#include <cstdint>
#include <vector>

namespace zeb {

/// Size of the smallest set of states that meets every set of `cells` (none empty). Exact; 0 for no
/// cells. Exponential in the worst case, immediate where cells are few or mostly single states.
int smallest_hitting_set(std::vector<std::uint32_t> cells);

/// The same from above: takes the state met by most cells, over and over. Never too small.
int greedy_hitting_set(std::vector<std::uint32_t> cells);

}  // namespace zeb
