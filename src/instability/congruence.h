// How congruently the branches of a polytomy are placed in the trees, and which of them must go for
// the trees to agree.
//
// A branch's positional congruence counts triplets: of it with each two others, how many no two
// trees resolve in different ways (Pol and Escapa 2009).
#pragma once

#include <vector>

#include "instability/polytomies.h"

namespace zeb {

/// Of one branch of a polytomy.
struct branch_congruence {
  double agreed = 1;  // triplets with it that no two trees resolve differently, as a share
  double mean = 1;    // the share of trees with the most frequent state of a triplet, on average
};
/// By branch.
std::vector<branch_congruence> congruence_of(const polytomy& of);

/// Branches to be pruned from a polytomy, in this order.
struct pruning_series {
  struct step {
    int branch = 0;
    branch_congruence congruence;  // when it was chosen
    int groups = 0;                // in the consensus of the resolutions, after it
  };
  std::vector<step> steps;
  int gain = 0;  // groups gained less those that go with the branches
};
/// Takes out the branch of least agreement (among equals that of the lowest mean, then of the
/// fewest taxa) again and again, and keeps the series up to where it adds most groups. Branches of
/// more than `most_taxa` taxa stay. No choice is taken back, so other series may add more.
pruning_series series_for(const polytomy& of, int most_taxa);

}  // namespace zeb
