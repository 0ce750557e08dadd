// What the collapsing rules make of a small tree, by enumerating every shortest reconstruction of
// every character. Shares no code with the program.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "support/naive_parsimony.h"

namespace naive {

/// Cells by terminal as in least_steps; at most 6 states. Additive: ranges, any state between the
/// lowest and the highest may be at a node.
struct small_character {
  std::vector<std::uint32_t> cells;
  bool additive = false;
};

/// The groups (terminals below a node, as bits) of the internal branches of a rooted tree that stay
/// under rule 1 (some reconstruction has a change there), 2 (the states of its ends differ), 3
/// (every reconstruction has a change) or 4 (3, on the tree that 2 leaves). Polytomies are hard.
std::set<std::uint32_t> groups_that_stay(const rooted_tree& tree,
                                         const std::vector<small_character>& characters, int rule);

/// Terminals below each node, as bits.
std::vector<std::uint32_t> groups_below(const rooted_tree& tree);
/// The tree of some groups that go together and the terminals of `terminals` (bits), as a rooted
/// tree whose terminals keep their numbers; the others hang nowhere.
rooted_tree tree_of_groups(int n, std::uint32_t terminals, const std::set<std::uint32_t>& groups);

}  // namespace naive
