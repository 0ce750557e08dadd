// The polytomies of a strict consensus, and how each tree resolves them.
//
// The branches of such a polytomy are clades of every tree, so what a tree says of it is a small
// tree whose terminals are the branches.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "base/taxon_set.h"
#include "consensus/selection.h"
#include "trees/tree_record.h"

namespace zeb {

/// The trees of a selection with their branches collapsed as for a consensus, without the taxa that
/// it excludes.
class compared_copies {
 public:
  explicit compared_copies(const tree_selection& selection);
  const std::vector<std::vector<tree_node>>& trees() const { return trees_; }

 private:
  std::vector<std::vector<tree_node>> trees_;
};

/// One way of resolving a polytomy, a normalised tree of its branches.
struct resolution {
  std::vector<tree_node> tree;  // 2 * branches - 1 cells
  int count = 0;                // trees that have it
  int first = 0;                // index of the first of them
};

struct polytomy {
  int node = 0;                         // of the consensus
  std::vector<taxon_set> branches;      // by their lowest taxon
  std::vector<resolution> resolutions;  // the most frequent first, then as they come

  int size() const { return static_cast<int>(branches.size()); }
};

/// All polytomies of the strict consensus of the trees, with their resolutions. Trees that lack a
/// branch are left out of those of its polytomy.
std::vector<polytomy> polytomies_of(const_tree_span strict, const compared_copies& copies,
                                    int ntax);

/// The resolutions where some branches (1 in `left_out`) are taken out, alike ones together.
std::vector<resolution> without_branches(const polytomy& from,
                                         std::span<const std::uint8_t> left_out);
/// Groups that all of the resolutions have, and that the polytomy lacks.
int common_groups_of(const std::vector<resolution>& resolutions, int branches);
/// "((A B)C)": the resolution with each branch by its letters.
std::string resolution_text(const resolution& shown, int branches);
/// "A" to "Z", "AA"...
std::string branch_letters(int branch);

}  // namespace zeb
