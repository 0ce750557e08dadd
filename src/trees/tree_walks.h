// Walks over a tree outside of searches: from a node to its descendants, from the root outward.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "base/indices.h"
#include "trees/tree_record.h"

namespace zeb {

/// The descendants of one node, for `for`. Good as long as the lists it comes from.
class child_range {
 public:
  class iterator {
   public:
    iterator(const int* sibling, int node) : sibling_(sibling), node_(node) {}
    int operator*() const { return node_; }
    iterator& operator++() {
      node_ = sibling_[node_];
      return *this;
    }
    bool operator==(const iterator& other) const { return node_ == other.node_; }

   private:
    const int* sibling_;
    int node_;
  };

  child_range(const std::vector<int>& sibling, int first)
      : sibling_(sibling.data()), first_(first) {}
  iterator begin() const { return {sibling_, first_}; }
  iterator end() const { return {sibling_, -1}; }

 private:
  const int* sibling_;
  int first_;
};

/// Descendant lists of a tree, in increasing node number; polytomies allowed.
struct descendant_lists {
  std::vector<int> first;    // per node: first descendant, -1 none
  std::vector<int> sibling;  // per node: next descendant of the same ancestor, -1 none
  std::vector<int> count;    // per node: descendants

  child_range children(int node) const { return {sibling, first[at(node)]}; }
  std::size_t nodes() const { return first.size(); }
};
descendant_lists descendants_of(const_tree_span tree, int ntax);
/// Internal nodes from the root outward, each after its ancestor.
std::vector<int> internal_nodes_root_first(const descendant_lists& lists, int ntax);
/// Terminals of the clade of `node`, flagged (other entries are left alone).
void flag_terminals(const_tree_span tree, int ntax, int node, std::span<std::uint8_t> flags);

}  // namespace zeb
