// What the consensus methods share: branch weights, and the counting of many trees.
#pragma once

#include <optional>
#include <string_view>

#include "consensus/group_tally.h"
#include "consensus/selection.h"
#include "engine/collapsing/collapsing.h"
#include "trees/tree_record.h"

namespace zeb {

/// Weights of a tree's branches, by node, while trees are collapsed; empty else.
class branch_weights {
 public:
  explicit branch_weights(const tree_selection& selection);
  std::span<const std::uint8_t> of(const_tree_span tree);

 private:
  std::optional<branch_judge> judge_;
  std::vector<std::uint8_t> flags_;
};

/// Counts all trees, new groups being entered. False when the arena has no room for them.
[[nodiscard]] bool count_all_groups(const tree_selection& selection, branch_weights& weights,
                                    group_tally& tally);

/// Shows progress and looks for an interrupt, now and then.
void poll_trees(std::string_view label, std::size_t tree, std::size_t trees);

/// Arena bytes of a tally for as many groups as two trees can have, with its working arrays.
std::size_t bytes_of_small_tally(int ntax);
/// Says once a run that the path of little memory is taken without having been asked for.
void note_low_memory(const tree_selection& selection);

}  // namespace zeb
