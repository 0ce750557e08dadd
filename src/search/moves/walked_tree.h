// The nodes of a tree of a search in order.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zeb {

/// Of a binary tree in internal numbering, rooted on terminal 0, with `n` terminals.
struct walked_tree {
  walked_tree(std::span<const std::int32_t> tree, int n);

  std::vector<std::int32_t> first, second;  // descendants by node, -1 at terminals
  // Each node before its descendants, and those of one clade together; without root and terminal 0.
  std::vector<std::int32_t> preorder;

  std::vector<std::int32_t> terminals_of(int clade, int n) const;
};

}  // namespace zeb
