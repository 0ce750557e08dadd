// Which of the cells that two files score differently matter for what their trees differ in.
#pragma once

#include <array>
#include <vector>

#include "compare/trees/compared_results.h"
#include "compare/trees/exclusive_groups.h"

namespace zeb {

struct critical_cells {
  std::vector<differing_cell> cells;
  long combinations = 0;  // of cells that were tried for lengths
  int most_cells = 1;     // in such a combination
};

/// A cell is critical by synapomorphies where the other file's score takes a synapomorphy off an
/// exclusive group, gives it one, or makes it another; by lengths where it changes how many steps
/// the trees of the files differ in. Where no cell of a character does so alone, combinations of a
/// few are tried.
critical_cells find_critical_cells(const compared_results& results,
                                   const std::array<const compared_tree_set*, 2>& sets,
                                   const std::array<exclusive_groups, 2>& exclusive,
                                   critical_method method);

}  // namespace zeb
