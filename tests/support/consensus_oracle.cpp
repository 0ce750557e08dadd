#include "support/consensus_oracle.h"

#include <algorithm>

namespace zeb_test {
namespace {

int trees_in(const oracle_trees& input) { return static_cast<int>(input.trees.size()); }

}  // namespace

std::map<int, taxon_set> node_groups(const std::vector<std::int32_t>& tree, int ntax,
                                     const taxon_set& excluded) {
  std::map<int, taxon_set> out;
  for (int n = ntax + 1; n < tree[static_cast<std::size_t>(ntax)]; ++n) out[n];
  for (int t = 0; t < ntax; ++t) {
    if (tree[static_cast<std::size_t>(t)] == 0 || excluded.count(t)) continue;
    for (int n = tree[static_cast<std::size_t>(t)]; n != ntax;
         n = tree[static_cast<std::size_t>(n)])
      out[n].insert(t);
  }
  return out;
}

group_counts count_groups(const oracle_trees& input) {
  taxon_set in_play;
  for (int t = 0; t < input.ntax; ++t)
    for (const auto& tree : input.trees)
      if (tree[static_cast<std::size_t>(t)] != 0 && !input.excluded.count(t)) in_play.insert(t);
  group_counts counts;
  for (std::size_t i = 0; i < input.trees.size(); ++i) {
    std::set<taxon_set> present;
    for (const auto& [node, group] : node_groups(input.trees[i], input.ntax, input.excluded)) {
      const bool has_weight =
          input.weights.empty() || input.weights[i][static_cast<std::size_t>(node)];
      if (has_weight && group.size() > 1 && group.size() < in_play.size()) present.insert(group);
    }
    for (const taxon_set& group : present) ++counts[group];
  }
  return counts;
}

bool contradict(const taxon_set& a, const taxon_set& b) {
  const auto common = std::count_if(a.begin(), a.end(), [&](int t) { return b.count(t) != 0; });
  return common > 0 && common < static_cast<long>(a.size()) && common < static_cast<long>(b.size());
}

int worst_contradiction(const group_counts& counts, const taxon_set& group) {
  int worst = 0;
  for (const auto& [other, count] : counts)
    if (contradict(group, other)) worst = std::max(worst, count);
  return worst;
}

group_counts oracle_strict(const oracle_trees& input) {
  group_counts out;
  for (const auto& [group, count] : count_groups(input))
    if (count == trees_in(input)) out[group] = count;
  return out;
}

group_counts oracle_majority(const oracle_trees& input, int cut) {
  group_counts out;
  const int least = std::min(cut * trees_in(input) / 100 + 1, trees_in(input));
  for (const auto& [group, count] : count_groups(input))
    if (count >= least) out[group] = count;
  return out;
}

group_counts oracle_differences(const oracle_trees& input, int cut) {
  group_counts out;
  const int least = std::min(cut * trees_in(input) / 100 + 1, trees_in(input));
  const group_counts counts = count_groups(input);
  for (const auto& [group, count] : counts) {
    const int difference = count - worst_contradiction(counts, group);
    if (difference >= least) out[group] = difference;
  }
  return out;
}

group_counts oracle_components(const oracle_trees& input) {
  group_counts out;
  const group_counts counts = count_groups(input);
  for (const auto& [group, count] : counts)
    if (worst_contradiction(counts, group) == 0) out[group] = count;
  return out;
}

}  // namespace zeb_test
