// Where the root of a tree must be for it to share most groups with another one.
#pragma once

#include <cstdint>
#include <vector>

#include "distances/cut_trees.h"

namespace zeb {

enum class group_match : std::uint8_t {
  none,        // not there, or no group of 2 terminals or more but not all
  same,        // the other tree has the group
  complement,  // it has what is outside of it as a group
  missing,
};
/// By node of `tree`; trees of the same terminals. A group that is there as such and as complement
/// is the same.
std::vector<group_match> matches_of_groups(const cut_tree& tree, const cut_tree& other);

struct best_root {
  int node = 0;    // the root comes on the branch below it; the root itself: it stays
  int shared = 0;  // groups of `tree` that the other has with that root
  int shared_before = 0;
};
/// The root stays where no other place is better; of several the first by number.
best_root best_root_of(const cut_tree& other, const cut_tree& tree);

}  // namespace zeb
