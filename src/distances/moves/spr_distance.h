// How many SPR moves lead from one tree to another: bounds, and a way that takes as many as the
// upper one.
#pragma once

#include <functional>
#include <vector>

#include "base/random.h"
#include "distances/cut_trees.h"
#include "distances/moves/agreement_forest.h"
#include "distances/moves/spr_path.h"

namespace zeb {

struct spr_distance {
  int at_least = 0;
  int at_most = 0;
  bool resolved = false;            // polytomies were, so that moves are few
  std::vector<tree_node> from, to;  // the trees as compared: dichotomous, and rooted alike
  agreement_forest forest;          // of these
  bool is_exact() const { return at_least == at_most; }
  std::vector<clade_move> moves(int terminals) const {
    return moves_between(cut_tree(from, terminals), cut_tree(to, terminals), forest);
  }
};

/// Trees of the same terminals. `unrooted`: what moves may hold the root; then each terminal is
/// tried as the root.
spr_distance count_spr_moves(const cut_tree& a, const cut_tree& b, bool unrooted,
                             const forest_effort& effort, random_generator& generator,
                             const std::function<void()>& poll);
/// 1 less the share of moves in the most that trees of so many terminals can need by.
double spr_similarity(int moves, int terminals, bool unrooted);

}  // namespace zeb
