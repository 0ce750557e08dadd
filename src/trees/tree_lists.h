// Lists of trees as the commands on trees take them.
#pragma once

#include <cstdint>
#include <vector>

namespace zeb {

/// A byte per tree in memory, 1 for those of the list that comes next; all trees without a list.
/// "Tree(s) are required" without trees.
std::vector<std::uint8_t> read_tree_list();
/// The same, where "/" alone stands for the last tree.
std::vector<std::uint8_t> read_tree_list_or_last();

}  // namespace zeb
