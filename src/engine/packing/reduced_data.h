// A part of the tree in work as a data set of its own.
//
// What leaves the part becomes terminals, whose sets are those that the passes made: of a clade cut
// off its preliminary sets, and of all that lies outside, as terminal 0, the preliminary sets that
// it would have if the tree was rooted at the part. Fields are copied from words to words; the
// matrix isn't looked at. Where lengths depend on the root, a character's costs outside are what
// the root of the reduced data pays, and terminal 0 says nothing. Characters that any arrangement
// of the part gives the same steps are left out. The steps outside count: what the part's
// arrangement scores is the score of the whole tree with it, whatever the criterion.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/search_data.h"

namespace zeb {

/// A connected part of the tree in work.
struct tree_sector {
  std::int32_t top = -1;  // its node next to the root: internal
  std::vector<std::int32_t>
      terminals;  // nodes where it ends, at least 3: terminals or whole clades
};

/// Terminals that a sector may have for a search of it, with room for `slots` trees and `slack` per
/// cent more than needed, to fit in the memory that is free.
int largest_sector(const search_data& data, int slots, int slack);

/// Prepares `inner` for the sector of the tree in work of `outer`, whose sets must be right, and
/// whose score is `score`. Terminal i + 1 of `inner` is the sector's terminal i, terminal 0 all
/// that is outside. The inner data use tables of the outer. Memory: the arena's low stack.
void prepare_reduced_data(search_data& inner, const search_data& outer, const tree_sector& sector,
                          double score);

/// The sector as it stands in `outer_tree` (internal numbering, `n` terminals), as a tree of the
/// reduced data.
std::vector<std::int32_t> tree_of_sector(std::span<const std::int32_t> outer_tree, int n,
                                         const tree_sector& sector);
/// The node of the outer tree for each node of that tree; -1 for what stands for all outside.
std::vector<std::int32_t> outer_nodes_of_sector(std::span<const std::int32_t> outer_tree,
                                                const tree_sector& sector,
                                                std::span<const std::int32_t> inner_tree);
/// Arranges the sector in `outer_tree` as `inner_tree` has it.
void arrange_sector(std::span<std::int32_t> outer_tree, int n, const tree_sector& sector,
                    std::span<const std::int32_t> inner_tree);

}  // namespace zeb
