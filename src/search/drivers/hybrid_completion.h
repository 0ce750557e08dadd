// Completion of trees that lack taxa: the taxa are added where they cost least, and swapped, while
// the relations that the tree had stay as they were. Polytomies are resolved.
#pragma once

#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// Does the tree (matrix numbering) lack active taxa?
bool lacks_taxa(const_tree_span tree);
/// Raises the errors of trees that can't be completed; `number` is the tree's in the message.
void check_completion(const_tree_span tree, int number);

struct completed_tree {
  std::vector<tree_node> tree;  // empty: the search was stopped
  double score = 0;
};
/// Completes a tree for which the two above hold, under the user's constraints too. Random draws go
/// on from the process's generator. Errors: constraints that the tree contradicts.
completed_tree complete_tree(const_tree_span tree);

}  // namespace zeb
