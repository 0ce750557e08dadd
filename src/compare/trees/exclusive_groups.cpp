#include "compare/trees/exclusive_groups.h"

#include <algorithm>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "consensus/group_tally.h"
#include "matrix/matrix.h"
#include "supports/bremer.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

std::vector<tree_node> cut_record(int tree, std::span<const std::uint8_t> cut_off) {
  const const_tree_span stored = stored_tree(tree);
  std::vector<tree_node> record(stored.begin(), stored.end());
  delete_taxa(record, matrix.ntax, cut_off);
  return record;
}

/// A group that all trees have, since they are rooted there.
bool is_all_but_outgroup(const group_record& group, const_tree_span tree) {
  int terminals = 0;
  for (int t = 0; t < matrix.ntax; ++t) terminals += !is_absent(tree, t);
  return group.size == terminals - 1 && !has_taxon(group, matrix.outgroup);
}

common_groups common_groups_of(const std::vector<std::vector<tree_node>>& records) {
  return groups_in_all(std::vector<const_tree_span>(records.begin(), records.end()));
}

}  // namespace

compared_tree_set::compared_tree_set(std::span<const int> trees,
                                     std::span<const std::uint8_t> cut_off) {
  for (const int t : trees) records.push_back(cut_record(t, cut_off));
  for (const std::vector<tree_node>& record : records) shapes.emplace_back(record);
  common = common_groups_of(records);
}

std::vector<std::uint8_t> taxa_not_compared(std::span<const int> trees,
                                            std::span<const std::uint8_t> left_out) {
  std::vector<std::uint8_t> out(left_out.begin(), left_out.end());
  out.resize(at(matrix.ntax), 0);
  for (int t = 0; t < matrix.ntax; ++t)
    for (const int tree : trees)
      if (is_absent(stored_tree(tree), t)) out[at(t)] = 1;
  return out;
}

exclusive_groups groups_only_in(const compared_tree_set& set, const compared_tree_set& other) {
  const arena_scope memory;
  group_tally tally(matrix.ntax, {});
  exclusive_groups found;
  if (!tally.count_tree_groups(other.common.tree, {}, true)) error_end("Not enough RAM");
  const std::size_t of_other = tally.groups().size();
  if (!tally.count_tree_groups(set.common.tree, {}, true)) error_end("Not enough RAM");
  const std::vector<int>& records = tally.records_of_last_tree();
  for (int v = matrix.ntax + 1; at(v) < records.size(); ++v) {
    if (records[at(v)] < 0) continue;
    const std::size_t record = at(records[at(v)]);
    if (record < of_other) {
      found.shared += !is_all_but_outgroup(tally.groups()[record], set.common.tree);
      continue;
    }
    found.nodes.push_back(v);
    const auto& all = tally.groups();
    found.contradicted +=
        std::any_of(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(of_other),
                    [&](const group_record& group) { return groups_conflict(group, all[record]); });
  }
  return found;
}

std::vector<apomorphy> synapomorphies_of(const compared_tree_set& set, std::span<const int> nodes,
                                         const std::vector<int>& characters) {
  std::vector<std::vector<apomorphy>> by_tree;
  for (const tree_shape& shape : set.shapes) by_tree.push_back(find_apomorphies(shape, characters));
  std::vector<apomorphy> changes = common_apomorphies(set.common, by_tree);
  std::erase_if(changes, [&](const apomorphy& change) {
    return !std::binary_search(nodes.begin(), nodes.end(), change.node);
  });
  return changes;
}

}  // namespace zeb
