// Moves of clades that make one tree another, from an agreement forest of both.
#pragma once

#include <vector>

#include "distances/moves/agreement_forest.h"

namespace zeb {

struct clade_move {
  std::vector<int> clade;       // terminals that move
  std::vector<int> sister;      // terminals of the clade that they become the sister of
  std::vector<tree_node> tree;  // after the move
};

/// As many moves as the forest has pieces beside the first; the last tree is `b`.
std::vector<clade_move> moves_between(const cut_tree& a, const cut_tree& b,
                                      const agreement_forest& forest);

/// Both trees dichotomous: polytomies get the groups of the other tree that fit in, and what is
/// left is resolved in the same way in both.
struct resolved_pair {
  std::vector<tree_node> a, b;
  bool changed = false;
};
resolved_pair resolve_alike(const cut_tree& a, const cut_tree& b);

}  // namespace zeb
