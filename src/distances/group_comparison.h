// The groups of one tree as another one sees them.
#pragma once

#include <vector>

#include "base/taxon_set.h"
#include "trees/tree_record.h"

namespace zeb {

enum class group_status : int {
  none,          // no group: a terminal, the root, or one that the cut leaves nothing of
  shared,        // the other tree has it
  contradicted,  // the other tree has a group that overlaps with it
  absent,        // neither
};

struct compared_group {
  int node = 0;  // of the tree as it is stored
  group_status status = group_status::none;
  taxon_set taxa;  // of those that both trees have
};

/// The groups of `tree` of 2 or more taxa, but not all, of the `shared` ones that both trees have,
/// in the order of its nodes; without roots also those complements of which the other tree has.
std::vector<compared_group> compare_groups(const_tree_span tree, const_tree_span other, int ntax,
                                           const taxon_set& shared, bool unrooted);
int groups_with(const std::vector<compared_group>& groups, group_status status);

}  // namespace zeb
