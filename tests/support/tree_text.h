// Trees for tests, from parentheses or at random, as ancestor arrays of 2 * ntax - 1 nodes.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace zeb_test {

/// "(0 (1 2) 3)" with numbers of terminals. Internal nodes get numbers in order of opening.
std::vector<std::int32_t> tree_of(const std::string& text, int ntax);

/// A random tree of the terminals; `polytomy` is the chance in 100 of joining at a node instead of
/// a branch, `absent` that a terminal is left out (the first two are always in).
std::vector<std::int32_t> random_tree(int ntax, std::mt19937& random, int polytomy = 0,
                                      int absent = 0);

/// Each terminal but the last is the sister of all that follow.
std::vector<std::int32_t> caterpillar(int ntax);

}  // namespace zeb_test
