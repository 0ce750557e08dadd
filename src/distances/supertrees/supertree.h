// One tree from trees of different taxa.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "base/taxon_set.h"
#include "trees/tree_record.h"

namespace zeb {

struct supertree_settings {
  enum kind_of_tree : int {
    build,       // all that any of the trees says, as long as they don't contradict each other
    strict,      // groups that all trees have that say anything of them
    combinable,  // groups that some tree has and none contradicts
    majority,    // groups that more than `cut` per cent of the trees have that say anything of them
  };
  int kind = strict;
  int cut = 50;
};

/// What trees make of a group, each by those of its taxa that it has.
struct group_support {
  int having = 0;
  int against = 0;     // they have a group that overlaps with it
  int unresolved = 0;  // they have two or more of its taxa and one outside, but no such group
};

struct supertree {
  std::vector<tree_node> tree;          // a record of the same taxa
  std::vector<group_support> supports;  // by node
  bool compatible = true;               // a tree has all that the trees say
  taxon_set conflict;  // taxa on which the trees can't all be right; empty: compatible
};

/// Of records of `ntax` taxa, without the excluded ones. Where all trees have the same taxa, the
/// groups are those of the consensus of that name. Else they are sought by joining taxa that trees
/// have together to the exclusion of others, from the root outward, what is weakest being dropped
/// where all taxa hang together. Each group that is found is then put to the trees, so that all
/// that are shown are what the kind says, but others may be missed. Errors: too many taxa or trees.
supertree make_supertree(std::span<const const_tree_span> trees, int ntax,
                         const taxon_set& excluded, const supertree_settings& how,
                         const std::function<void(double)>& poll);

}  // namespace zeb
