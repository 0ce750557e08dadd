#include "consensus/majority_consensus.h"

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "consensus/candidate_tree.h"
#include "consensus/cluster_matcher.h"
#include "consensus/counting.h"
#include "console/progress.h"

namespace zeb {
namespace {

/// Bytes of the standard algorithm's tally, for trees that resemble each other.
std::size_t bytes_of_majority_tally(int ntax) {
  const std::size_t n = at(ntax);
  const std::size_t words = (n + 31) / 32;
  std::size_t bytes = checked_product((words + 1) * 8 + 60, 2 * n);
  if (ntax > 10000) bytes += 2 * n * 8;
  return bytes;
}

/// The candidates, then a second pass over the trees that counts them.
group_tree majority_in_little_memory(const tree_selection& selection, int min_count,
                                     std::span<const std::uint8_t> left_out) {
  const char* remedy = "\nCondense trees (excluding taxa, if needed) and then consense";
  if (!selection.excluded.empty())
    error_end(std::string("Low memory majority rule doesn't allow exclusion of taxa") + remedy);
  if (selection.collapse)
    error_end(std::string("Low memory majority rule can't be done with temporary collapsing") +
              remedy);
  note_low_memory(selection);
  const std::size_t n = selection.trees.size();
  candidate_tree candidates(selection.ntax, left_out);
  for (std::size_t i = 0; i < n; ++i) {
    poll_trees(text_of("Checking tree %i of %i", static_cast<int>(i) + 1, static_cast<int>(n)), i,
               n);
    candidates.take(selection.trees[i]);
  }
  group_tree out{candidates.tree(), {}};
  out.values.assign(out.tree.size(), 0);
  cluster_matcher matcher(selection.ntax, left_out);
  matcher.set_reference(out.tree);
  for (std::size_t i = 0; i < n; ++i) {
    poll_trees("Counting groups", i, n);
    matcher.match(selection.trees[i], {});
    for (const int node : matcher.reference_preorder())
      out.values[at(node)] += matcher.matched()[at(node)];
  }
  clear_progress();
  for (const int node : matcher.reference_preorder()) {
    if (node == selection.ntax) continue;
    const int above = out.tree[at(node)];
    if (above != selection.ntax && out.values[at(above)] < min_count)
      out.tree[at(node)] = out.tree[at(above)];
  }
  normalise_with_values(out, selection.ntax);
  return out;
}

}  // namespace

group_tree majority_consensus(const tree_selection& selection, int cut) {
  const std::vector<std::uint8_t> left_out = taxa_left_out(selection);
  const int min_count = trees_above_cut(cut, static_cast<int>(selection.trees.size()));
  const bool has_room = bytes_of_majority_tally(selection.ntax) <= arena_free();
  if (!selection.low_memory && has_room) {
    branch_weights weights(selection);
    const arena_scope scope;
    group_tally tally(selection.ntax, left_out);
    if (count_all_groups(selection, weights, tally))
      return build_tree_from_groups(tally, min_count, left_out);
  }
  return majority_in_little_memory(selection, min_count, left_out);
}

}  // namespace zeb
