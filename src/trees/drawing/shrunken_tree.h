// Trees shown with whole groups of taxa as single terminals.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// Settings of `tshrink`.
struct shrinking_state {
  std::uint32_t groups = 0;  // taxon groups, a bit each, that are shown as one terminal
};
extern shrinking_state shrinking;

void show_groups_as_terminals(std::uint32_t groups);
void show_trees_in_full();

/// A tree as it is shown.
struct shrunken_tree {
  std::vector<tree_node> record;
  std::vector<std::string> labels;      // by taxon
  std::vector<std::string> node_texts;  // by node; empty without texts
};

/// Each of the groups that is a clade of the tree becomes one terminal, the first of its taxa, with
/// the name of the group and the number of its taxa as label. Larger groups come first; groups
/// within those are gone with them. `labels` is by taxon, `node_texts` by node or empty.
shrunken_tree shrink_tree(const_tree_span tree, std::vector<std::string> labels,
                          std::span<const std::string> node_texts);

}  // namespace zeb
