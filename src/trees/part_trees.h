// Trees of a part of the taxa in the place of the trees in memory, for a while.
#pragma once

#include "trees/constraints/constraints.h"
#include "trees/drawing/tags.h"
#include "trees/notation/auto_save.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {

/// As long as one lives, the tree buffer is another one, empty, of a fixed capacity, for trees of
/// the taxa that `matrix` has now; constraints, groups of trees and tags aren't there, and nothing
/// is saved automatically. Its memory is the arena's low stack, which the caller takes back.
class part_trees_scope {
 public:
  explicit part_trees_scope(int capacity);
  ~part_trees_scope();
  part_trees_scope(const part_trees_scope&) = delete;
  part_trees_scope& operator=(const part_trees_scope&) = delete;

 private:
  tree_store trees_;
  tree_group_state groups_;
  constraint_definitions constraints_;
  tag_store tags_;
  int seconds_between_savings_;
};

}  // namespace zeb
