// Full passes over the tree in work.
#pragma once

#include <cstdint>
#include <span>

#include "engine/search_data.h"

namespace zeb {

/// Full down and final pass over the tree given by its ancestor array (internal numbering, binary,
/// `nodes` entries). Fills the tree arrays and all node sets; returns the score. With `in_swap` and
/// `cluster_count` above 0 the cluster unions (`union_now`) are widened by the new sets, so the
/// swapper empties them first.
double tree_length(search_data& data, std::span<const std::int32_t> anc);
/// The same over the tree in `data.tree`, but without characters that are scored by whole trees.
double full_pass(search_data& data);
/// Down and final pass over the subtree of `node` as a tree of its own (its ancestor isn't looked
/// at); returns its length, without what is the same on all trees. At a terminal nothing is done.
/// Under implied weights the steps are added to the counters instead.
double subtree_pass(search_data& data, int node);

/// Gives two terminals each other's sets. The sets of the tree in work are wrong then.
void exchange_terminals(search_data& data, int a, int b);

/// What the kernels walk over: the tree in work with its sets, and the log and clusters if they are
/// in force.
pass_context context_of(search_data& data);

}  // namespace zeb
