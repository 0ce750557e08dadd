// Which groups of a reference tree are in other trees, without a table of groups: in the order of
// the reference's terminals each of its groups is an interval, and a group of another tree is an
// interval too where its last minus its first terminal is its size less one (Day 1985). One tree
// costs time and memory in proportion to its nodes.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

class cluster_matcher {
 public:
  /// Terminals with a 1 in `ignored` (may be empty) count for no group.
  cluster_matcher(int ntax, std::span<const std::uint8_t> ignored);

  /// Takes a tree (no node with a single descendant but perhaps the root) as the reference. Its
  /// numbers need not be in normal form; cell ntax holds the highest number plus one, and internal
  /// nodes that aren't in use have ancestor -1.
  void set_reference(const_tree_span tree);
  /// Finds the reference's groups of less than all its terminals in a tree. Nodes with weight 0
  /// match nothing (`weights` by node, empty: all 1).
  void match(const_tree_span tree, std::span<const std::uint8_t> weights);

  /// By node of the reference: the tree has its group.
  const std::vector<std::uint8_t>& matched() const { return matched_; }
  /// Internal nodes of the tree whose groups (of two terminals or more, not all) the reference
  /// lacks.
  const std::vector<int>& unmatched_nodes() const { return unmatched_; }
  /// Terminals below a node of the tree matched last: a part of its terminals in drawing order.
  std::span<const int> terminals_below(int node) const {
    const auto n = static_cast<std::size_t>(node);
    return {tree_terminals_.data() + begin_[n], static_cast<std::size_t>(end_[n] - begin_[n])};
  }
  /// Terminals below a node of the reference.
  int reference_size(int node) const {
    const auto n = static_cast<std::size_t>(node);
    return high_[n] - low_[n] + 1;
  }
  /// Nodes of the reference from the root outward.
  const std::vector<int>& reference_preorder() const { return reference_preorder_; }

 private:
  void walk(const_tree_span tree, std::vector<int>& preorder);
  int node_of_interval(int low, int high) const;

  int ntax_;
  std::vector<std::uint8_t> ignored_;
  // of the reference
  std::vector<int> rank_;              // by terminal, from 0; -1 not in it
  std::vector<int> low_, high_;        // by node: ranks of the first and last terminal
  std::vector<int> by_low_, by_high_;  // by rank: the node whose interval begins or ends there
  std::vector<int> reference_preorder_;
  std::vector<std::uint8_t> matched_;
  int terminals_ = 0;
  // of the other tree
  std::vector<int> preorder_, tree_terminals_, begin_, end_, unmatched_;
  // scratch of walks
  std::vector<int> first_, children_, stack_;
};

}  // namespace zeb
