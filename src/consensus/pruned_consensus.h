// Taxa whose absence makes a consensus more resolved.
//
// Trees may agree on nearly everything and still have a poor consensus, since a few taxa move about
// (Wilkinson 1995). Sets of taxa are left out of the trees, and the groups of the new consensus are
// compared with those that the old one keeps when the same taxa are cut off it.
#pragma once

#include <span>
#include <vector>

#include "base/taxon_set.h"
#include "consensus/group_tree.h"
#include "consensus/selection.h"

namespace zeb {

/// A set of taxa, how many groups its absence adds to the consensus, and how many go with it: those
/// that aren't groups, or not different ones, of the taxa that are left.
struct pruned_set {
  taxon_set taxa;
  int gain = 0;
  int lost = 0;

  int net() const { return gain - lost; }
};

/// The method: any that gives a consensus tree of a selection, minding its excluded taxa.
using consensus_method = group_tree (*)(const tree_selection& selection);

/// Groups of a consensus tree, without that of all its taxa.
int groups_of(const group_tree& result, int ntax);

/// How many sets of 1 to `largest` of `candidates` taxa there are, at most `limit`.
std::int64_t number_of_sets(int candidates, int largest, std::int64_t limit);

/// Tries all sets of 1 to `largest` of the candidates, and returns those that add groups, and more
/// of them than any smaller set within them: by gain, the greatest first, then by size. Taxa that
/// the selection excludes stay excluded. Ends early when the user or the time limit stops it: what
/// was found until then is returned. To be called as a search (`search_running`).
std::vector<pruned_set> sets_worth_pruning(tree_selection selection, consensus_method method,
                                           std::span<const int> candidates, int largest);
/// What leaving out the candidates with the given indices does.
pruned_set effect_of_pruning(const tree_selection& selection, consensus_method method,
                             std::span<const int> candidates, const std::vector<int>& chosen);
/// What leaving out each candidate alone does, in their order. Ends early as the above.
std::vector<pruned_set> gains_of_single_taxa(tree_selection selection, consensus_method method,
                                             std::span<const int> candidates);

}  // namespace zeb
