// The branches of a growing tree, level by level from the root, kept up as taxa are added.
//
// To walk the tree for this before each addition costs more than all else where taxa are many,
// since its nodes lie in no order in memory. Here an addition moves what lies below the new node
// one level down: in each level that is one run of neighbours.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/search_data.h"

namespace zeb {

/// A branch is named by the node above it. In each level, descendants come in the order of their
/// ancestors, the first descendant before the second.
class branch_order {
 public:
  /// The tree of three taxa: `top` beside the outgroup, and its descendants.
  void begin(int top, int first, int second);
  /// `node` comes on the branch `target` by way of `joint`, whose second descendant it will be.
  /// Before the links of the tree change.
  void insert(const search_data& data, int target, int joint, int node);

  /// Lists all but `top`, as pairs of first and second descendants; returns their number.
  int list(std::span<std::int32_t> out) const;

 private:
  struct run {
    std::size_t first;
    std::size_t length;
  };
  using level = std::vector<std::int32_t>;
  static run descendants(const search_data& data, const level& items, run of);

  std::vector<level> levels_;
  level coming_;  // into a level, while a node is inserted
  level leaving_;
};

}  // namespace zeb
