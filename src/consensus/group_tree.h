// From groups back to a tree.
#pragma once

#include <vector>

#include "consensus/group_tally.h"
#include "trees/tree_record.h"

namespace zeb {

/// A consensus: the tree, normalised, and for each of its nodes the value of its group (-1 for the
/// root, terminals and unused numbers).
struct group_tree {
  std::vector<tree_node> tree;  // 2 * ntax - 1 cells
  std::vector<int> values;      // the same
};

/// The tree with the tally's groups of 2 to (taxa in play - 1) taxa whose count is at least
/// `min_count`. They must not contradict each other. `absent` (may be empty) holds 1 for the taxa
/// that the tree leaves out.
group_tree build_tree_from_groups(const group_tally& tally, int min_count,
                                  std::span<const std::uint8_t> absent);

/// A tree without groups, of all taxa that aren't absent.
group_tree bush(int ntax, std::span<const std::uint8_t> absent);
/// Normalises the tree and moves the values along.
void normalise_with_values(group_tree& result, int ntax);

}  // namespace zeb
