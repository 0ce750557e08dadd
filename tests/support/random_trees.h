// Random trees as ancestor arrays, and what a tree says apart from its numbers. Plain code of the
// tests' own.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace zeb_test {

using record = std::vector<std::int32_t>;  // 2 * ntax - 1 cells

/// A random rooted tree: `polytomy` is the chance that a terminal joins a node instead of a branch,
/// `absent` the chance that it is left out (two at least are in). Internal nodes have their numbers
/// in random order, so the tree isn't in normal form.
record random_tree(int ntax, std::mt19937& random, double polytomy, double absent);
/// Everybody one step further from the root: (0 (1 (2 ...))).
record caterpillar(int ntax);

/// A number per clade, from its terminals alone, sorted: equal for equal trees.
std::vector<std::uint64_t> clades(const record& tree, int ntax);
/// The same for the splits of the tree without its root.
std::vector<std::uint64_t> splits(const record& tree, int ntax);

}  // namespace zeb_test
