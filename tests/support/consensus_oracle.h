// Consensus from sets of sets: slow, obvious, sharing no code with the program.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <vector>

namespace zeb_test {

using taxon_set = std::set<int>;
using group_counts = std::map<taxon_set, int>;  // trees with each group

struct oracle_trees {
  int ntax = 0;
  std::vector<std::vector<std::int32_t>> trees;
  std::vector<std::vector<std::uint8_t>> weights;  // by tree and node; empty: all 1
  taxon_set excluded;
};

/// Sets of the internal nodes of a tree but the root, without the excluded taxa, by node.
std::map<int, taxon_set> node_groups(const std::vector<std::int32_t>& tree, int ntax,
                                     const taxon_set& excluded);
/// Groups of 2 to (taxa in play - 1) taxa with the number of trees that have each.
group_counts count_groups(const oracle_trees& input);
bool contradict(const taxon_set& a, const taxon_set& b);
/// Count of the most frequent group that contradicts `group`.
int worst_contradiction(const group_counts& counts, const taxon_set& group);

group_counts oracle_strict(const oracle_trees& input);
group_counts oracle_majority(const oracle_trees& input, int cut);
group_counts oracle_differences(const oracle_trees& input, int cut);
group_counts oracle_components(const oracle_trees& input);

}  // namespace zeb_test
