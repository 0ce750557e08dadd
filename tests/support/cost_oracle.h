// Characters whose changes have costs, the slow and obvious way. Shares no code with the program.
#pragma once

#include <cstdint>
#include <vector>

#include "support/naive_parsimony.h"

namespace naive {

/// By the state before and the state after.
struct change_costs {
  int states = 2;
  std::vector<std::vector<long>> cost;
  std::uint32_t root_states = 0;  // that the root may have; 0: any
};
constexpr long forbidden = 32700;  // also what the root pays for a state that it may not have

/// The cheapest assignment of states to all nodes. `cells` as in least_steps. With a node given,
/// of those where it has that state.
long least_cost(const rooted_tree& tree, const std::vector<std::uint32_t>& cells,
                const change_costs& costs, int node = -1, int state = 0);
/// The same by trying all assignments to internal nodes: few taxa and states only.
long least_cost_by_trying(const rooted_tree& tree, const std::vector<std::uint32_t>& cells,
                          const change_costs& costs);
/// Of continuous characters: the least sum of changes, for cells that are ranges (low above high:
/// missing). Tries all ends of ranges at each node.
long least_change(const rooted_tree& tree, const std::vector<std::pair<long, long>>& ranges);

}  // namespace naive
