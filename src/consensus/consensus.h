// Consensus trees of a set of trees, and frequencies of the groups of one tree among others.
//
// All methods take their trees as ancestor arrays over the same `ntax` terminals and change none of
// them. Results are independent of the memory path taken.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "consensus/group_tree.h"

namespace zeb {

/// Settings of the consensus commands, and what lasts of a run.
struct consensus_settings {
  int majority_cut = 50;           // per cent, 50 to 100; `majority =N`
  int freqdif_cut = 0;             // per cent, 0 to 100; `freqdifs =N`
  bool low_memory_always = false;  // `nelsen <`
  bool low_memory_note_shown = false;
};
extern consensus_settings consensus;  // written by the consensus commands, but for the note

/// What goes into a consensus.
struct tree_selection {
  int ntax = 0;
  std::vector<const_tree_span> trees;  // of 2 * ntax - 1 cells; at least one
  std::vector<std::uint8_t> excluded;  // by taxon: left out; may be empty
  bool collapse = false;               // collapse each tree temporarily under the current rule
  bool low_memory = false;             // take the path of little memory whatever there is
};
/// The selected trees of the buffer (`selected`: 1 by number), under the current settings.
tree_selection select_stored_trees(std::span<const std::uint8_t> selected,
                                   std::span<const std::uint8_t> excluded = {});
/// Taxa that the result leaves out: excluded ones, and those that no tree has.
std::vector<std::uint8_t> taxa_left_out(const tree_selection& selection);
/// Do some of the trees lack some of the taxa in play?
bool some_trees_lack_taxa(const tree_selection& selection);

/// Groups that all trees have. Values: the number of trees.
group_tree strict_consensus(const tree_selection& selection);
/// Groups in more than `cut` per cent of the trees (in all of them for 100). Values: trees with the
/// group. With little memory, errors where taxa are excluded or trees collapsed.
group_tree majority_consensus(const tree_selection& selection, int cut);
/// Groups more frequent, by at least `cut` per cent of the trees and one tree, than the most
/// frequent group that contradicts them (Goloboff et al. 2003). Values: the difference in trees.
group_tree difference_consensus(const tree_selection& selection, int cut);
/// Groups that no tree contradicts (Bremer 1990). Values: trees with the group.
group_tree component_consensus(const tree_selection& selection);

/// By node of `tree`: trees of the selection with its group; -1 where the node has no group of 2 to
/// (taxa in play - 1) taxa.
std::vector<int> group_frequencies(const tree_selection& selection, const_tree_span tree);
/// The same, less the trees with the most frequent group that contradicts it. -1 is a difference
/// too, so nodes without a group have `no_group`.
constexpr int no_group = -2147483647;
std::vector<int> group_differences(const tree_selection& selection, const_tree_span tree);

/// Least number of trees for a group above `cut` per cent of `n_trees`.
int trees_above_cut(int cut, int n_trees);

}  // namespace zeb
