// Every binary tree of a few taxa, and the branches that a character supports: counted out, with
// nothing of the program.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <vector>

#include "support/naive_parsimony.h"

namespace naive {

/// Calls `visit` with each of the (2n - 5)!! unrooted binary trees of n taxa, as a rooted tree
/// whose root, node n, has terminal 0 and the rest as descendants.
void for_each_tree(int n, const std::function<void(const rooted_tree&)>& visit);

/// When a branch counts as there, over all shortest reconstructions of an unordered character.
enum class support {
  always,    // every branch
  possible,  // some reconstruction has a change on it
  differs,   // the sets of states that its ends can have differ
  certain,   // every reconstruction has a change on it
};

/// The groups (sets of terminals as bits, terminal 0 left out) of the branches that some character
/// supports. `cells[c][t]` as in least_steps.
std::set<std::uint32_t> supported_groups(const rooted_tree& tree,
                                         const std::vector<std::vector<std::uint32_t>>& cells,
                                         support rule);

/// Does one cut of a branch and one reconnection of the two parts, at any branch of each, lead from
/// one binary tree to the other? At most 31 terminals, roots as for_each_tree makes them.
bool one_bisection_apart(const rooted_tree& a, const rooted_tree& b);

}  // namespace naive
