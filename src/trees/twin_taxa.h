// Taxa with the same data as another one: set aside while others search, and put back on the trees.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// Taxa that were set aside, each with the one that stays for it, in the order of setting aside.
struct twin_state {
  int generation = 0;  // of the matrix that they are of
  std::vector<std::pair<int, int>> pairs;
};
extern twin_state twins;  // written by the functions below

/// Sets aside all but one of each group of taxa: inactive from now on. The
/// outgroup stays, else the first one. Error where fewer active taxa would be left than a matrix
/// must have.
void set_twins_aside(const std::vector<std::vector<int>>& groups);
/// The pairs of the data in memory; none where other data have come.
const std::vector<std::pair<int, int>>& twins_set_aside();
/// Those set aside become active, and nobody is set aside any more.
void take_twins_back();

/// Puts each taxon of the pairs that the tree lacks beside its twin, as one more descendant of the
/// node of those that are there already; where the twin is missing, too, nothing happens. Returns
/// how many were added.
int add_twins(tree_span tree, int ntax, const std::vector<std::pair<int, int>>& pairs);

}  // namespace zeb
