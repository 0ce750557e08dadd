// From statements on three taxa each, "two are closer to each other than to the third", to groups.
#pragma once

#include <functional>
#include <vector>

#include "base/taxon_set.h"

namespace zeb {

struct split_blocks {
  std::vector<taxon_set> groups;  // of two taxa or more, but not all
  bool stuck = false;             // some statements were dropped
  taxon_set conflict;             // the smallest block where that was so
};

/// `strength(a, b, c)`, where a < b: 0, or how strong the statement is that a and b are closer to
/// each other than to c. Taxa of a block that statements tie to each other stay together, and the
/// parts are blocks in turn; where the whole block hangs together, its weakest ties go. Statements
/// on taxa outside of a block don't count for it. Time: the cube of the taxa.
split_blocks split_by_triplets(int taxa, const std::function<int(int, int, int)>& strength);

}  // namespace zeb
