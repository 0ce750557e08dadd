// Consensus trees whose groups depend on what contradicts them, and the frequencies of the groups
// of one tree among others.
#pragma once

#include <vector>

#include "base/taxon_set.h"
#include "consensus/group_tree.h"
#include "consensus/selection.h"
#include "trees/tree_record.h"

namespace zeb {

/// Groups more frequent, by at least `cut` per cent of the trees and one tree, than the most
/// frequent group that contradicts them. Values: the difference in trees.
group_tree difference_consensus(const tree_selection& selection, int cut);
/// Groups that no tree contradicts (Bremer 1990). Values: trees with the group.
group_tree component_consensus(const tree_selection& selection);

/// By node of `tree`: trees of the selection with its group; -1 where the node has no group of 2 to
/// (taxa in play - 1) taxa.
std::vector<int> group_frequencies(const tree_selection& selection, const_tree_span tree);
/// A group of a tree and the most frequent of those that contradict it.
struct contested_group {
  bool is_group = false;  // 2 to (taxa in play - 1) taxa; else all is 0
  int count = 0;          // trees with it
  int against = 0;        // trees with the other; 0: nothing contradicts it
  taxon_set other;        // empty then

  int difference() const { return count - against; }
};
/// By node of `tree`.
std::vector<contested_group> contested_groups(const tree_selection& selection,
                                              const_tree_span tree);
/// The differences alone. -1 is one too, so nodes without a group have `no_group`.
constexpr int no_group = -2147483647;
std::vector<int> group_differences(const tree_selection& selection, const_tree_span tree);

}  // namespace zeb
