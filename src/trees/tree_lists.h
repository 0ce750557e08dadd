// Trees as commands name them: lists of trees, and the group that trees to be read go to.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zeb {

/// A byte per tree in memory, 1 for those of the list that comes next; all trees without a list.
/// "Tree(s) are required" without trees.
std::vector<std::uint8_t> read_tree_list();
/// The same, where "/" alone stands for the last tree.
std::vector<std::uint8_t> read_tree_list_or_last();

/// The group that trees read by one command are placed in.
struct target_group {
  int number = -1;       // -1: none
  bool replace = false;  // "=N": the group is emptied first
  void start() const;
  void add(int tree) const;
};

/// Reads "=N" or ">N" where one comes next. Error for a group out of range.
target_group read_target_group();

/// "@T N" in lists of taxa: flags the terminals that descend from node N of a tree, or terminal N.
/// Errors: no such tree or node.
void flag_descendants(int tree, int node, std::span<std::uint8_t> flags);
/// Trees in memory and trees of the vault become kinds of lists.
void register_tree_lists();

}  // namespace zeb
