#include "consensus/conflict_consensus.h"

#include "base/arena.h"
#include "base/indices.h"
#include "consensus/counting.h"

namespace zeb {
namespace {

/// Calls `use` with a tally of all groups of the trees, each counted.
template <class function>
auto with_all_groups(const tree_selection& selection, std::span<const std::uint8_t> left_out,
                     const function& use) {
  branch_weights weights(selection);
  const arena_scope scope;
  group_tally tally(selection.ntax, left_out);
  if (!count_all_groups(selection, weights, tally)) out_of_memory();
  return use(tally);
}

/// Enters the groups of a tree without counting it.
void enter_groups(group_tally& tally, const_tree_span tree) {
  const std::vector<std::uint8_t> no_weights(tree.size() + 1, 0);
  if (!tally.count_tree_groups(tree, no_weights, true)) out_of_memory();
}

taxon_set taxa_of(const group_record& group, int ntax) {
  taxon_set taxa(ntax);
  for (int t = 0; t < ntax; ++t)
    taxa.assign(t, (group.words[t / taxa_per_word] >> (t % taxa_per_word) & 1U) != 0);
  return taxa;
}

int tree_count(const tree_selection& selection) { return static_cast<int>(selection.trees.size()); }

}  // namespace

group_tree difference_consensus(const tree_selection& selection, int cut) {
  const std::vector<std::uint8_t> left_out = taxa_left_out(selection);
  const int n = tree_count(selection);
  return with_all_groups(selection, left_out, [&](group_tally& tally) {
    tally.compare_groups(n);
    return build_tree_from_groups(tally, trees_above_cut(cut, n), left_out);
  });
}

group_tree component_consensus(const tree_selection& selection) {
  const std::vector<std::uint8_t> left_out = taxa_left_out(selection);
  return with_all_groups(selection, left_out, [&](group_tally& tally) {
    std::vector<int> counts;
    for (const group_record& group : tally.groups()) counts.push_back(group.count);
    tally.compare_groups(tree_count(selection));
    for (std::size_t g = 0; g < counts.size(); ++g) {
      group_record& group = tally.groups()[g];
      if (group.count < counts[g]) group.size = 0;
      group.count = counts[g];
    }
    return build_tree_from_groups(tally, 1, left_out);
  });
}

std::vector<int> group_frequencies(const tree_selection& selection, const_tree_span tree) {
  branch_weights weights(selection);
  const arena_scope scope;
  group_tally tally(selection.ntax, selection.excluded);
  enter_groups(tally, tree);
  const std::vector<int> records = tally.records_of_last_tree();
  for (std::size_t i = 0; i < selection.trees.size(); ++i) {
    poll_trees("Counting groups", i, selection.trees.size());
    const const_tree_span other = selection.trees[i];
    if (!tally.count_tree_groups(other, weights.of(other), false)) out_of_memory();
  }
  std::vector<int> counts(tree.size(), -1);
  for (std::size_t n = 0; n < counts.size(); ++n)
    if (records[n] >= 0) counts[n] = tally.groups()[at(records[n])].count;
  return counts;
}

std::vector<contested_group> contested_groups(const tree_selection& selection,
                                              const_tree_span tree) {
  return with_all_groups(selection, selection.excluded, [&](group_tally& tally) {
    enter_groups(tally, tree);
    std::vector<std::size_t> nodes;
    std::vector<int> records;
    for (std::size_t n = 0; n < tree.size(); ++n)
      if (tally.records_of_last_tree()[n] >= 0) {
        nodes.push_back(n);
        records.push_back(tally.records_of_last_tree()[n]);
      }
    const std::vector<int> strongest = tally.strongest_conflicts(tree_count(selection), records);
    std::vector<contested_group> groups(tree.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      contested_group& group = groups[nodes[i]];
      group.is_group = true;
      group.count = tally.groups()[at(records[i])].count;
      if (strongest[i] < 0) continue;
      const group_record& other = tally.groups()[at(strongest[i])];
      group.against = other.count;
      group.other = taxa_of(other, selection.ntax);
    }
    return groups;
  });
}

std::vector<int> group_differences(const tree_selection& selection, const_tree_span tree) {
  std::vector<int> out;
  for (const contested_group& group : contested_groups(selection, tree))
    out.push_back(group.is_group ? group.difference() : no_group);
  return out;
}

}  // namespace zeb
