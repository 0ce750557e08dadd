// The candidates for a majority of trees, as one tree: little memory, one pass over the trees.
#pragma once

#include <vector>

#include "consensus/cluster_matcher.h"
#include "trees/tree_record.h"

namespace zeb {

/// Takes trees one by one and keeps a tree of groups with a counter each: trees with the group add
/// one, others take one away, at nothing the group goes, and groups of the tree that fit enter. At
/// the end every group of more than half of the trees is there, among others: a majority vote by
/// cancellation (Boyer and Moore 1991), held for all groups at once.
class candidate_tree {
 public:
  candidate_tree(int ntax, std::span<const std::uint8_t> left_out);
  void take(const_tree_span tree);
  const std::vector<tree_node>& tree() const { return tree_; }

 private:
  void drop_and_count(const std::vector<int>& rootward_first,
                      const std::vector<std::uint8_t>& matched);
  void enter(std::span<const int> group);

  int ntax_;
  std::vector<tree_node> tree_;  // unused internal numbers have ancestor -1
  std::vector<int> counter_;     // by node
  std::vector<int> size_;        // terminals by node, valid while groups enter
  std::vector<int> free_;        // unused internal numbers
  std::vector<int> filled_;      // by node: terminals of the entering group; 0 between groups
  std::vector<int> touched_;     // nodes with `filled_` above 0
  cluster_matcher matcher_;
};

}  // namespace zeb
