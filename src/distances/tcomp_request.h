// What is asked of `tcomp`.
#pragma once

#include "distances/matrix_report.h"
#include "distances/tree_distances.h"

namespace zeb {

struct tcomp_request {
  // What to measure; none of them: everything for two trees, groups for more.
  bool groups = false;
  bool triplets = false;
  bool quartets = false;
  bool agreement = false;

  bool together = false;  // one agreement subtree of all the trees
  bool list = false;      // groups in only one of two trees
  bool draw = false;      // the first tree, with what the others have of its groups
  bool save = false;      // the agreement subtree as the last tree
  matrix_target target;
  std::string phylip, csv;  // names of files; empty: none
  compared_trees_request trees;
  int measures() const { return groups + triplets + quartets + agreement; }
};

/// Up to ";", which stays unread.
tcomp_request read_tcomp_request();

}  // namespace zeb
