// The strict consensus: the groups that all trees have.
//
// Either the groups of the first tree are counted in the others by a table of groups, or, where
// memory is short, the consensus so far is compared with each tree through intervals of terminals
// (Day 1985). Both ways give the same tree.
//
// All methods of this room take their trees as ancestor arrays over the same terminals and change
// none of them. What they return doesn't depend on how much memory there is.
#pragma once

#include "consensus/group_tree.h"
#include "consensus/selection.h"

namespace zeb {

/// Groups that all trees have. Values: the number of trees.
group_tree strict_consensus(const tree_selection& selection);

}  // namespace zeb
