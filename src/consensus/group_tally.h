// The distinct groups of taxa of many trees, with the number of trees that have each.
//
// A group matches a record when size, check word and all words agree. Records are found through a
// hash index on the check word, so that the cost of a tree doesn't depend on the groups already
// there; the result is that of a scan of all records.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "consensus/node_sets.h"
#include "trees/tree_record.h"

namespace zeb {

/// One distinct group, in the order of first appearance.
struct group_record {
  set_word check = 0;
  const set_word* words = nullptr;
  int size = 0;        // taxa; set to 0 to leave the group out of a tree
  int count = 0;       // trees that have it; after a comparison, the frequency difference
  int seen_in = 0;     // last tree (counted from 1) that it was counted for
  int first_word = 0;  // first and last word that aren't 0
  int last_word = 0;
};

/// The sets lie in the arena: make a table inside an arena_scope, and drop it with that.
class group_tally {
 public:
  group_tally(int ntax, std::span<const std::uint8_t> excluded);

  /// Adds one tree: each of its groups of 2 to (taxa in play - 1) taxa gets its node's weight (0 or
  /// 1; `weights` by node, empty: all 1), at most once a tree. New groups are entered if `may_add`;
  /// records with fewer than `min_count` trees aren't found. False when the arena has no room for
  /// a new group: the table is then of no use.
  [[nodiscard]] bool count_tree_groups(const_tree_span tree, std::span<const std::uint8_t> weights,
                                       bool may_add);
  /// Numbers of the records of the nodes of the tree counted last; -1 none.
  const std::vector<int>& records_of_last_tree() const { return record_of_node_; }

  std::vector<group_record>& groups() { return records_; }
  const std::vector<group_record>& groups() const { return records_; }
  int ntax() const { return sets_.ntax(); }
  int taxa_in_play() const { return taxa_in_play_; }
  /// Groups that the tree counted last had as its records with at least `min_count` trees.
  int groups_found() const { return groups_found_; }

  int min_count = 0;

  /// Conflict test of all pairs: subtracts from each group's count the largest count of the groups
  /// that overlap with it without containing or being contained. `n_trees` trees were counted. Two
  /// groups of one tree never conflict, so counts of conflicting ones sum to n_trees at most.
  void compare_groups(int n_trees);
  /// For each of these records that of the most frequent group in conflict with it; -1 none.
  std::vector<int> strongest_conflicts(int n_trees, std::span<const int> of_records) const;

 private:
  bool grow();
  int find(int node) const;
  int enter(int node);
  void index_record(int number);

  node_sets_builder sets_;
  int taxa_in_play_;
  int trees_counted_ = 0;
  int groups_found_ = 0;
  std::vector<group_record> records_;
  std::vector<int> index_;           // open addressing; record number, -1 free; a power of two
  std::vector<int> record_of_node_;  // by node of the last tree
  std::span<set_word> free_rows_;    // sets not yet taken, in the arena
};

/// Do the groups overlap with taxa of each outside the other?
bool groups_conflict(const group_record& a, const group_record& b);

}  // namespace zeb
