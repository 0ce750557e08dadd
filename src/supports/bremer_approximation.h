// How far from the best score trees must be kept so that Bremer supports can be had from them.
#pragma once

#include "supports/bremer_requests.h"

namespace zeb {

/// Bounds from above for the supports of the groups of a tree, by node; no_fraction where a node
/// has no group. A tree without the group need cost no more than this one with the branch
/// collapsed: some other resolution of the polytomy costs as little.
std::vector<double> costs_of_collapsing(const_tree_span tree);
/// The value of `subopt` by which all groups of the tree asked for are lost, or all but the share
/// that is spared, in a line of text.
void show_approximation(const bremer_request& request);

}  // namespace zeb
