// What goes into a consensus: the trees, the taxa left out, and how the user wants it made.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// Settings of the consensus commands.
struct consensus_settings {
  int majority_cut = 50;           // per cent, 50 to 100; `majority =N`
  int freqdif_cut = 0;             // per cent, 0 to 100; `freqdifs =N`
  bool low_memory_always = false;  // `nelsen <`
};
extern consensus_settings consensus;  // written by the consensus commands

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

/// Least number of trees for a group above `cut` per cent of `n_trees`.
int trees_above_cut(int cut, int n_trees);

}  // namespace zeb
