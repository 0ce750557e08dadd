// The majority rule consensus (Margush and McMorris 1981): the groups that more than a given share
// of the trees have.
//
// Either all groups of all trees are counted in a table, or, where memory is short, a first pass
// over the trees keeps one tree of candidates, and a second one counts those.
#pragma once

#include "consensus/group_tree.h"
#include "consensus/selection.h"

namespace zeb {

/// Groups in more than `cut` per cent of the trees (in all of them for 100). Values: trees with the
/// group. With little memory, errors where taxa are excluded or trees collapsed.
group_tree majority_consensus(const tree_selection& selection, int cut);

}  // namespace zeb
