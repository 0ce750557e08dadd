// The node around which a sector lies, told apart from how a tree is numbered.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// A taxon in each of three directions from a node of a stored tree, which tell the node however
/// the tree is numbered and rooted; fewer at a terminal, or where active taxa are in fewer
/// directions.
std::vector<int> taxa_around(const_tree_span tree, int node);

/// The node at which the paths between three terminals meet.
int node_between(std::span<const std::int32_t> tree, int n, int a, int b, int c);

}  // namespace zeb
