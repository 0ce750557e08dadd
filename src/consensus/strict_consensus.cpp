#include "consensus/strict_consensus.h"

#include <algorithm>

#include "base/arena.h"
#include "base/indices.h"
#include "consensus/cluster_matcher.h"
#include "consensus/counting.h"
#include "console/progress.h"

namespace zeb {
namespace {

/// The groups of the first tree are counted in the others; a group that a tree lacks falls below
/// `min_count` and isn't looked at again.
group_tree strict_by_table(const tree_selection& selection,
                           std::span<const std::uint8_t> left_out) {
  branch_weights weights(selection);
  const arena_scope scope;
  group_tally tally(selection.ntax, left_out);
  const std::size_t n = selection.trees.size();
  for (std::size_t i = 0; i < n; ++i) {
    poll_trees("Checking groups", i, n);
    const const_tree_span tree = selection.trees[i];
    if (!tally.count_tree_groups(tree, weights.of(tree), i == 0)) out_of_memory();
    tally.min_count = static_cast<int>(i) + 1;
    if (tally.groups_found() == 0) break;
  }
  clear_progress();
  return build_tree_from_groups(tally, static_cast<int>(n), left_out);
}

/// Removes the internal nodes that aren't kept, the root apart.
void drop_nodes(std::span<tree_node> tree, int ntax, const std::vector<int>& rootward_first,
                const std::vector<std::uint8_t>& keep) {
  for (const int n : rootward_first) {
    if (n == ntax) continue;
    const int above = tree[at(n)];
    if (above != ntax && !keep[at(above)]) tree[at(n)] = tree[at(above)];
  }
  for (const int n : rootward_first)
    if (n > ntax && !keep[at(n)]) tree[at(n)] = -1;
}

/// The consensus so far is compared with each tree, without a tally.
group_tree strict_in_little_memory(const tree_selection& selection,
                                   std::span<const std::uint8_t> left_out) {
  const int ntax = selection.ntax;
  branch_weights weights(selection);
  group_tree out;
  out.tree.assign(selection.trees.front().begin(), selection.trees.front().end());
  // Taxa that only later trees have go to the root, before others go: then a group of all taxa in
  // play that the first tree has stays a group.
  for (int t = 0; t < ntax; ++t)
    if (!left_out[at(t)] && is_absent(out.tree, t)) out.tree[at(t)] = ntax;
  delete_taxa(out.tree, ntax, left_out);
  out.values.assign(out.tree.size(), static_cast<int>(selection.trees.size()));
  cluster_matcher matcher(ntax, left_out);
  // Beginning with the first tree itself, which may lose groups by collapsing.
  for (std::size_t i = 0; i < selection.trees.size(); ++i) {
    poll_trees("Checking groups", i, selection.trees.size());
    const const_tree_span tree = selection.trees[i];
    matcher.set_reference(out.tree);
    matcher.match(tree, weights.of(tree));
    drop_nodes(out.tree, ntax, matcher.reference_preorder(), matcher.matched());
    if (std::find(matcher.matched().begin(), matcher.matched().end(), 1) == matcher.matched().end())
      break;
  }
  clear_progress();
  normalise_with_values(out, ntax);
  return out;
}

}  // namespace

group_tree strict_consensus(const tree_selection& selection) {
  const std::vector<std::uint8_t> left_out = taxa_left_out(selection);
  if (selection.low_memory || bytes_of_small_tally(selection.ntax) > arena_free()) {
    note_low_memory(selection);
    return strict_in_little_memory(selection, left_out);
  }
  return strict_by_table(selection, left_out);
}

}  // namespace zeb
