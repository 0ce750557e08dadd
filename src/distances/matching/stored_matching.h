// Taxa of stored trees matched with each other.
#pragma once

#include <functional>
#include <vector>

#include "base/taxon_set.h"
#include "distances/matching/taxon_matching.h"
#include "trees/tree_record.h"

namespace zeb {

struct matching_settings {
  int replications = 20;
  bool free = false;  // taxa that both trees have may stand for others, too
};

struct stored_match {
  std::vector<int> partner;        // by taxon of the matrix: that of the second tree; -1 none
  std::vector<tree_node> renamed;  // the second tree with the names of the first
  int shared = 0;
  int at_most = 0;
  int groups = 0;  // of the first tree, by the taxa that are matched
  bool is_exact() const { return shared == at_most; }
};

/// Errors: trees of less than two taxa.
stored_match match_stored_trees(const_tree_span first, const_tree_span second, int ntax,
                                const taxon_set& excluded, const matching_settings& how,
                                const std::function<void(double)>& poll);

}  // namespace zeb
