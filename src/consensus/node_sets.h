// The sets of taxa below the nodes of one tree, as bit sets.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/taxon_set.h"
#include "trees/tree_record.h"
#include "trees/tree_store.h"

namespace zeb {

/// Sets, sizes and check words of the internal nodes of one tree at a time, filled in one pass from
/// the terminals rootward. The sets lie in the arena: make one inside an arena_scope.
class node_sets_builder {
 public:
  /// `excluded`, if not empty, holds 1 for the taxa that no set counts.
  node_sets_builder(int ntax, std::span<const std::uint8_t> excluded);

  /// Fills everything for a tree of 2 * ntax - 1 cells.
  void build(const_tree_span tree);

  /// Internal nodes without the root, each before its ancestor.
  std::span<const int> nodes() const { return order_; }
  const set_word* set(int node) const { return sets_.data() + row(node) * words_; }
  int size(int node) const { return size_[row(node)]; }
  /// Sum of one pseudo-random word a taxon: equal for equal sets, rarely equal for others.
  set_word check(int node) const { return check_[row(node)]; }

  int ntax() const { return ntax_; }
  std::size_t words() const { return words_; }
  /// Arena bytes that one builder takes.
  static std::size_t bytes_needed(int ntax);

 private:
  std::size_t row(int node) const { return static_cast<std::size_t>(node - ntax_); }
  void add_terminal(int node, int terminal);
  void add_descendant(int node, int descendant);

  int ntax_;
  std::size_t words_;
  std::vector<std::uint8_t> excluded_;  // by taxon
  std::vector<set_word> keys_;          // by taxon
  std::span<set_word> sets_;            // ntax - 1 rows of words_
  std::vector<int> size_, pending_;     // by internal node; descendants not yet added
  std::vector<set_word> check_;
  std::vector<std::uint8_t> is_filled_;
  std::vector<int> order_;
};

}  // namespace zeb
