// Trees as they are compared: cut to some of the taxa, which get the numbers from 0 on.
//
// What follows a cut knows neither the matrix nor absent taxa: a cut tree is a record of all its
// terminals, so that its nodes go from 0 to `node_limit`, the root being `terminals`.
#pragma once

#include <span>
#include <vector>

#include "base/taxon_set.h"
#include "trees/tree_record.h"
#include "trees/tree_walks.h"

namespace zeb {

taxon_set taxa_of_tree(const_tree_span tree, int ntax);
/// The taxa that all of the trees have.
taxon_set shared_taxa(std::span<const const_tree_span> trees, int ntax);
/// The same tree of these taxa alone, all of which it must have; they get numbers by their order.
/// Two or more. `stored_nodes`, if given, receives the node of `tree` that each node comes from.
std::vector<tree_node> cut_to_taxa(const_tree_span tree, int ntax, const taxon_set& taxa,
                                   std::vector<int>* stored_nodes = nullptr);
/// The other way: a record of `ntax` terminals, where terminal i is taxon `taxa[i]`.
std::vector<tree_node> with_taxa(const_tree_span cut, std::span<const int> taxa, int ntax);
std::vector<int> members_of(const taxon_set& taxa);

/// A cut tree ready for counting: lists of descendants, an order, sizes.
struct cut_tree {
  cut_tree(const_tree_span tree, int terminals);

  int terminals = 0;
  std::vector<tree_node> ancestors;
  descendant_lists lists;
  std::vector<int> outward;  // internal nodes, each after its ancestor
  std::vector<int> sizes;    // terminals by node

  int root() const { return terminals; }
  int nodes() const { return static_cast<int>(sizes.size()); }
  child_range children(int node) const { return lists.children(node); }
};

}  // namespace zeb
