// Equal trees among those in memory, as `trees_hooks::collapser` defines equal.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zeb {

/// For each chosen tree the number of the first chosen tree that is equal to it, which may be
/// itself; -1 for the others. Takes time in proportion to the size of the trees.
std::vector<int> first_equal_trees(std::span<const std::uint8_t> chosen);

}  // namespace zeb
