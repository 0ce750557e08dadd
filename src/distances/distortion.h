// How far the groups of one tree are torn apart on another.
#pragma once

#include "distances/cut_trees.h"

namespace zeb {

/// The groups of `from` are taken as characters of two states, and `on` as the tree to explain
/// them: of the steps that they would take on a bush beyond one each, the share that they are
/// spared. 1: the tree has all groups; 0: it keeps none of them together. Trees of the same
/// terminals.
double distortion_coefficient(const cut_tree& from, const cut_tree& on);

}  // namespace zeb
