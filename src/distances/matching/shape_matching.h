// A first map between the terminals of two trees, from their shapes.
#pragma once

#include <vector>

#include "distances/cut_trees.h"

namespace zeb {

/// Which clades of the trees could be one, so that most of them are: for each pair of clades the
/// best of its parts, by matching descendants, is known from the tips down. `a` has no more
/// terminals than `b`; a clade may only lose terminals in `b`, as many as there are more of them.
/// By terminal of `a`, all different. Takes only one partner for each descendant, so more may be
/// possible.
std::vector<int> map_by_shape(const cut_tree& a, const cut_tree& b);

}  // namespace zeb
