// Matrices made at random.
#pragma once

#include <cstdint>
#include <vector>

namespace zeb {

/// Replaces the data by `nchar` characters of `nstates` equally frequent states for `ntax` taxa
/// named TAX0, TAX1... Re-seeds first.
void make_random_matrix(int nchar, int ntax, int nstates);

/// Replaces the data by characters that evolve along a tree of the present taxa, given as an array
/// of ancestors: along each branch a state stays with probability `stasis_percent`, and otherwise
/// becomes one of the others. Taxa that the tree lacks get missing entries. Re-seeds first.
void make_matrix_from_tree(const std::vector<std::int32_t>& ancestors, double stasis_percent,
                           int nchar, int nstates);

/// Gives a copy of a stored tree, by number; raises the error for one that isn't there. Registered
/// by the tree store, at start-up.
using tree_source = std::vector<std::int32_t> (*)(int tree);
void set_tree_source(tree_source source);
std::vector<std::int32_t> tree_from_source(int tree);

}  // namespace zeb
