// Agreement forests of rooted trees, and with them how many moves of clades (SPR) lead from one
// tree to the other: one for each piece of the smallest forest but the first (Bordewich and Semple
// 2005).
//
// Clades that both trees have are solved by themselves, from the smallest on: what is needed within
// one doesn't depend on the rest of the trees, but for whether one of its pieces goes on below it.
#pragma once

#include <functional>
#include <vector>

#include "base/random.h"
#include "distances/cut_trees.h"
#include "distances/moves/forest_search.h"

namespace zeb {

struct agreement_forest {
  // Terminals; the first piece is that of the root, perhaps without a terminal.
  std::vector<std::vector<int>> pieces;
  int at_least = 0;  // moves
  int moves() const { return static_cast<int>(pieces.size()) - 1; }
  bool is_exact() const { return at_least == moves(); }
};

/// Binary trees of the same terminals.
agreement_forest smallest_forest(const cut_tree& a, const cut_tree& b, const forest_effort& effort,
                                 random_generator& generator, const std::function<void()>& poll);

}  // namespace zeb
