// From the trees of the replicates to supports of groups: how often groups were found, how much
// more often than what contradicts them, and how fast they go as more characters change.
#pragma once

#include <string>
#include <vector>

#include "supports/resampling/replicates.h"
#include "trees/branch_labels.h"

namespace zeb {

/// A tree with the support of each group. The group of all taxa but the outgroup, which any tree
/// has by its rooting, counts as none.
struct supported_tree {
  std::vector<tree_node> tree;
  // By node, up to the last one:
  std::vector<double> values;  // per cent, or slopes; nodes without a group have the most
  std::vector<std::uint8_t> is_group;
  std::vector<std::string> texts;    // on a diagram
  std::vector<branch_label> labels;  // for tree files
  std::vector<double> frequencies;   // of slopes only: 0 to 1
};

/// A stored tree as replicates have theirs: rooted by the outgroup, without the taxa left out.
std::vector<tree_node> tree_like_replicates(int number, const std::vector<std::uint8_t>& left_out);

/// Where a group isn't looked for in a given tree, all groups above the cut make a tree.
/// `reference` is empty, or a tree without the taxa left out, all of whose groups are shown.
supported_tree frequency_supports(const replicates& sampled,
                                  const std::vector<tree_node>& reference, int cut);
/// The same for differences of frequencies, which may be negative for groups of a given tree.
supported_tree difference_supports(const replicates& sampled,
                                   const std::vector<tree_node>& reference, int cut);
/// Regression of whether a replicate has a group on the share of characters that it changed: how
/// much of its frequency a group loses from no character changed to all. Errors where replicates
/// don't share their characters.
supported_tree slope_supports(const replicates& sampled, const std::vector<tree_node>& reference);

/// Mean over the groups; 0 without any.
double mean_support(const supported_tree& supports);

}  // namespace zeb
