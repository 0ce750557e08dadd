// Which taxa of one tree stand for which of another, so that the trees share most groups.
#pragma once

#include <functional>
#include <vector>

#include "base/random.h"
#include "distances/cut_trees.h"

namespace zeb {

struct taxon_match {
  std::vector<int> map;  // by terminal of the first tree: that of the second; -1 none
  int shared = 0;        // groups that both trees have when the second is cut and renamed by it
  int at_most = 0;       // no map shares more
  bool is_exact() const { return shared == at_most; }
};

/// All terminals of the smaller tree get partners. `fixed`, by terminal of the first tree: a
/// partner that stands, -1 none. From the shapes, and from random maps, two partners at a time are
/// exchanged as long as more groups are shared; with few possible partners all maps are
/// tried.
taxon_match match_taxa(const cut_tree& a, const cut_tree& b, const std::vector<int>& fixed,
                       int replications, random_generator& generator,
                       const std::function<void(double)>& poll);

}  // namespace zeb
