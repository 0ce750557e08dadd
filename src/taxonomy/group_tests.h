// Which groups of the taxonomy are monophyletic on a tree, and what breaks the others.
#pragma once

#include <vector>

#include "taxonomy/taxonomy.h"
#include "trees/tree_record.h"

namespace zeb {

/// A group on a tree. Taxa that may or may not be members, for all that their names say, break
/// nothing wherever they are.
struct group_on_tree {
  int present = 0;      // members that the tree has; with fewer than 2 the rest tells nothing
  int node = -1;        // of two members or more, the clade that holds most less the others
  int pieces = 0;       // largest clades without others that hold members
  taxon_set outside;    // members that aren't in the clade
  taxon_set intruders;  // others that are
  bool on_other_root = false;  // monophyletic if the root were elsewhere

  bool can_be_tested() const { return present > 1; }
  bool monophyletic() const { return outside.empty() && intruders.empty(); }
};
group_on_tree test_group(const taxonomic_groups& all, int group, const_tree_span tree, int ntax);

}  // namespace zeb
