// Apomorphies as text, in the forms of `apo`.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "mapping/apomorphies.h"

namespace zeb {

/// A tree with its apomorphies: one of the buffer, or the consensus of several.
struct tree_with_changes {
  std::string name;
  int number;  // of the tree in the buffer, -1 for a consensus
  const_tree_span tree;
  std::vector<apomorphy> changes;  // sorted by node
};

/// Characters, or characters and states, on the branches; `width` columns for each.
struct branch_text_style {
  bool with_states = false;
  int width = 20;
};
void draw_apomorphies(const tree_with_changes& shown, const branch_text_style& style);
/// Node by node, terminals first.
void list_by_node(const tree_with_changes& shown);
void list_by_character(const tree_with_changes& shown, const std::vector<int>& characters);
/// Group by group, the groups being matched between the trees: in which of them they change how.
void list_matched(std::span<const tree_with_changes> trees);

}  // namespace zeb
