// Trees as characters: one for each group, with 1 for the taxa in it, 0 for the others of the tree,
// and ? for taxa that the tree lacks (Baum 1992, Ragan 1992).
#pragma once

#include <string>
#include <vector>

#include "base/taxon_set.h"

namespace zeb {

struct representation_settings {
  bool root = true;       // a further row, the first, without any group
  bool supports = false;  // groups weigh what their labels say
  bool balanced = false;  // the groups of each tree weigh the same in sum
  bool merge = false;     // equal columns become one, with the sum of their weights
};

struct matrix_representation {
  std::vector<std::string> names;  // of the rows
  std::vector<std::string> rows;   // of "0", "1" and "?"
  std::vector<int> weights;        // by column
  int unlabelled = 0;              // groups without a number as label, where these are the weights
};

/// Of stored trees, without the excluded taxa. Errors: no tree has a group.
matrix_representation represent_trees(const std::vector<int>& trees, const taxon_set& excluded,
                                      const representation_settings& how);

}  // namespace zeb
