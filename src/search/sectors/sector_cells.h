// A sector of a tree as a matrix that users can look at.
#pragma once

#include <span>
#include <vector>

#include "engine/packing/reduced_data.h"
#include "matrix/part_matrix.h"

namespace zeb {

/// Rows for the terminals of a sector of the tree in work: taxa have their cells, clades and what
/// is outside the states that may be at their nodes by the terminals on their side alone. Numbers
/// in the names are those of taxa of the matrix, and of nodes of the tree in work.
/// Characters with costs are taken as unordered ones here: searches go by the reduced data, which
/// have the costs.
std::vector<part_taxon> rows_of_sector(const search_data& outer, const tree_sector& sector);

}  // namespace zeb
