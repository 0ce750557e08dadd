// Binary trees made from nothing: at random, and all there are.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// The active taxa, the one to root on first: the outgroup if it is active. Error for fewer than
/// three.
std::vector<int> taxa_of_generated_trees();

/// Builds the tree in which taxon i of the sequence (from the third) joins branch `branches[i]`, a
/// number below 2i - 3: the branch below an earlier taxon, or below the node that one came with.
/// The first taxon hangs on the root, and nothing joins its own branch: the root is on it.
void tree_of_choices(std::span<const int> taxa, std::span<const int> branches, tree_span tree,
                     int ntax);

/// Draws one of the binary trees of these taxa, each with the same chance, rooted so that the first
/// taxon is sister of all others. Takes its draws from the search generator.
void random_binary_tree(std::span<const int> taxa, tree_span tree, int ntax);

/// How many binary trees there are, the root's place apart: 1 x 3 x 5 ... (2n - 5).
double binary_tree_count(int taxa);

/// Steps through all binary trees of these taxa, rooted on the first, in a fixed order.
class all_binary_trees {
 public:
  all_binary_trees(std::vector<int> taxa, int ntax);
  /// Writes the next tree; false when there are no more.
  bool next(tree_span tree);

 private:
  std::vector<int> taxa_;
  int ntax_;
  std::vector<int> choice_;  // by taxon of the sequence: the branch it joins
  bool first_ = true;
};

}  // namespace zeb
