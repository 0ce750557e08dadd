// All binary trees that come of adding taxa one after the other, depth first, the incomplete ones
// too.
#pragma once

#include <vector>

#include "trees/tree_record.h"

namespace zeb {

class growing_trees {
 public:
  /// The first taxon is what trees are rooted on, and the first three make the first tree.
  growing_trees(std::vector<int> taxa, int ntax);

  /// The next tree: the one at hand with a taxon more, if `deeper` and there is one; else the last
  /// taxon moves to its next place. False where there are no more.
  bool next(bool deeper);
  void write(tree_span tree) const;

  bool complete() const { return placed_ == static_cast<int>(taxa_.size()); }
  int taxon_added() const;
  /// How much of all complete trees lies before the tree at hand.
  double percent() const;

 private:
  std::vector<int> taxa_;
  int ntax_;
  int placed_ = 0;
  std::vector<int> choice_;  // by taxon of the sequence: the branch that it joins
};

}  // namespace zeb
