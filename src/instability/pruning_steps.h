// Rogue taxa one after the other: which to take out of trees for a consensus to have most groups.
#pragma once

#include <vector>

#include "consensus/pruned_consensus.h"

namespace zeb {

/// What is taken out by one step.
struct pruning_step {
  taxon_set taxa;
  int gained = 0;  // groups
  int lost = 0;
  int groups = 0;  // of the consensus after it
};

/// Takes the set of up to `largest` taxa with the highest net gain out of the trees, and looks
/// again. Where no set adds groups, since more taxa must go at once, the taxon goes without which
/// the groups of a majority have the highest frequencies, `look` times in a row at most; such steps
/// stay only where later ones bring more groups than there ever were. No choice is taken back
/// otherwise, so other series might end higher. To be called as a search.
std::vector<pruning_step> steps_of_pruning(tree_selection selection, consensus_method method,
                                           std::vector<int> candidates, int largest, int look);

/// The sets worth pruning (`sets_worth_pruning`), the highest net gain first. Error where there
/// are too many to be tried.
std::vector<pruned_set> sets_by_net_gain(const tree_selection& selection, consensus_method method,
                                         const std::vector<int>& candidates, int largest);

int taxa_in_play(const tree_selection& selection);

}  // namespace zeb
