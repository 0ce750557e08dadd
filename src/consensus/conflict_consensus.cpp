#include "consensus/conflict_consensus.h"

#include "base/arena.h"
#include "base/indices.h"
#include "consensus/counting.h"

namespace zeb {
namespace {

/// Calls `use` with a table of all groups of the trees, each counted.
template <class function>
auto with_all_groups(const tree_selection& selection, std::span<const std::uint8_t> left_out,
                     const function& use) {
  branch_weights weights(selection);
  const arena_scope scope;
  group_tally table(selection.ntax, left_out);
  if (!count_all_groups(selection, weights, table)) out_of_memory();
  return use(table);
}

/// Enters the groups of a tree without counting it.
void enter_groups(group_tally& table, const_tree_span tree) {
  const std::vector<std::uint8_t> no_weights(tree.size() + 1, 0);
  if (!table.count_tree_groups(tree, no_weights, true)) out_of_memory();
}

int tree_count(const tree_selection& selection) { return static_cast<int>(selection.trees.size()); }

}  // namespace

group_tree difference_consensus(const tree_selection& selection, int cut) {
  const std::vector<std::uint8_t> left_out = taxa_left_out(selection);
  const int n = tree_count(selection);
  return with_all_groups(selection, left_out, [&](group_tally& table) {
    table.compare_groups(n);
    return build_tree_from_groups(table, trees_above_cut(cut, n), left_out);
  });
}

group_tree component_consensus(const tree_selection& selection) {
  const std::vector<std::uint8_t> left_out = taxa_left_out(selection);
  return with_all_groups(selection, left_out, [&](group_tally& table) {
    std::vector<int> counts;
    for (const group_record& group : table.groups()) counts.push_back(group.count);
    table.compare_groups(tree_count(selection));
    for (std::size_t g = 0; g < counts.size(); ++g) {
      group_record& group = table.groups()[g];
      if (group.count < counts[g]) group.size = 0;
      group.count = counts[g];
    }
    return build_tree_from_groups(table, 1, left_out);
  });
}

std::vector<int> group_frequencies(const tree_selection& selection, const_tree_span tree) {
  branch_weights weights(selection);
  const arena_scope scope;
  group_tally table(selection.ntax, selection.excluded);
  enter_groups(table, tree);
  const std::vector<int> records = table.records_of_last_tree();
  for (std::size_t i = 0; i < selection.trees.size(); ++i) {
    poll_trees("Counting groups", i, selection.trees.size());
    const const_tree_span other = selection.trees[i];
    if (!table.count_tree_groups(other, weights.of(other), false)) out_of_memory();
  }
  std::vector<int> counts(tree.size(), -1);
  for (std::size_t n = 0; n < counts.size(); ++n)
    if (records[n] >= 0) counts[n] = table.groups()[at(records[n])].count;
  return counts;
}

std::vector<int> group_differences(const tree_selection& selection, const_tree_span tree) {
  return with_all_groups(selection, selection.excluded, [&](group_tally& table) {
    enter_groups(table, tree);
    std::vector<int> nodes, records;
    for (std::size_t n = 0; n < tree.size(); ++n)
      if (table.records_of_last_tree()[n] >= 0) {
        nodes.push_back(static_cast<int>(n));
        records.push_back(table.records_of_last_tree()[n]);
      }
    const std::vector<int> largest = table.largest_conflicts(tree_count(selection), records);
    std::vector<int> out(tree.size(), no_group);
    for (std::size_t i = 0; i < nodes.size(); ++i)
      out[at(nodes[i])] = table.groups()[at(records[i])].count - largest[i];
    return out;
  });
}

}  // namespace zeb
