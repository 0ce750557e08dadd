// Two stored trees, compared by the taxa that both have.
#pragma once

#include <string>
#include <vector>

#include "base/taxon_set.h"
#include "distances/cut_trees.h"
#include "distances/tree_distances.h"

namespace zeb {

struct tree_pair {
  int first = 0;  // numbers of the trees
  int second = 0;
  taxon_set taxa;  // compared

  /// One of the trees, with terminals numbered by their order among the taxa.
  cut_tree cut(int number) const;
  /// The taxa that such terminals are.
  taxon_set stored_taxa(const std::vector<int>& terminals) const;
};

/// Errors: they share less than two taxa.
tree_pair pair_of(int first, int second, const taxon_set& excluded);
/// The same for requests of two trees, in one list or two.
tree_pair pair_of(const compared_trees_request& request);

/// Names of taxa with a blank in front of each, in lines of which the first begins at a column.
std::string names_of_taxa(const taxon_set& taxa, std::size_t column);

}  // namespace zeb
