// A data set made of two, and where everything of either is in it.
#pragma once

#include <vector>

#include "compare/data_set.h"

namespace zeb {

/// Numbers in the combination of the taxa and characters of either set.
struct combined_numbers {
  std::vector<int> taxa_of_first, taxa_of_second;
  std::vector<int> characters_of_first, characters_of_second;
  int ntax = 0;
  int nchar = 0;
};

struct combination {
  data_set data;  // with the trees of the first set, then those of the second
  combined_numbers numbers;
};

/// A tree of a set, with the terminals renumbered as in a set of `ntax` taxa.
std::vector<tree_node> renumbered_tree(const std::vector<tree_node>& tree,
                                       const std::vector<int>& new_numbers, int ntax);

}  // namespace zeb
