// Parsimony the slow and obvious way: one character at a time, a cost for every state at every
// node. Shares no code with the program.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace naive {

/// A rooted tree: `parent[v]`, -1 at the root. Nodes 0 to terminals-1 are terminals. Polytomies are
/// allowed.
struct rooted_tree {
  int terminals = 0;
  std::vector<int> parent;
};

/// Fewest steps of one character. `cells[t]` is the set of states of terminal t as bits; no bits
/// means missing. Unordered: any change costs 1. Additive: a change costs the difference, and a
/// cell is the range from its lowest to its highest state.
long least_steps(const rooted_tree& tree, const std::vector<std::uint32_t>& cells, bool additive);

/// The same with the states of the root limited to one; a large number if it can't be had.
long least_steps_with_state(const rooted_tree& tree, const std::vector<std::uint32_t>& cells,
                            bool additive, int node, int state);

/// A binary tree of n terminals with uniformly chosen attachments; the root's descendants are
/// terminal 0 and the rest; the root is node n.
rooted_tree random_tree(int n, std::mt19937& generator);

}  // namespace naive
