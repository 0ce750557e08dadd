// Where trees place a branch that they disagree about, and the characters that its places cost
// differently.
#pragma once

#include <vector>

#include "base/taxon_set.h"
#include "instability/polytomies.h"
#include "trees/tree_record.h"

namespace zeb {

/// One place of the branch: the first of the trees with the branch moved there.
struct placement {
  std::vector<tree_node> tree;
  taxon_set sister;
  int count = 0;  // trees that place it there
};
/// The places that the trees give to a clade, the most frequent first, all in the first tree
/// without the taxa of `pruned` that aren't in the clade. Where a tree has a sister that the first
/// one has not, the place is at the smallest clade around it.
std::vector<placement> placements_of(const compared_copies& copies, const taxon_set& clade,
                                     const taxon_set& pruned, int ntax);

/// A character whose steps depend on the place.
struct deciding_character {
  int character = 0;
  std::vector<double> steps;  // by placement

  double range() const;  // weighted
};
/// Those that scores count, the widest ranges first.
std::vector<deciding_character> deciding_characters(const std::vector<placement>& places);

}  // namespace zeb
