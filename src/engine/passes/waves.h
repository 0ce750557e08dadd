// Repair of the sets of the tree in work where it changed.
#pragma once

#include "engine/search_data.h"

namespace zeb {

/// With `in_swap` on, the waves also widen `union_now` of the cluster of each `branch` word
/// written.

/// The wave after `clip` was detached and `start`, its sister, took the parent's place. Makes
/// the sets of the main tree and those of the subtree, whose root is `clip`, as two trees. With
/// `clip` -1: `start` is the node beside which something was attached (or put back), as
/// repair_after_insert(data, sister of start).
/// The sets of the free joint are left as they are and mean nothing. With `start` 0 and `clip` its
/// sister, still linked, nothing remains of the main tree, and only the subtree is done; putting it
/// back is repair_after_clip(data, 0, -1).
void repair_after_clip(search_data& data, int start, int clip);
/// The wave after terminal or subtree `node` was attached: its sets, as those of the tree, must
/// have been valid before. Those of the joint need not be.
void repair_after_insert(search_data& data, int node);

/// Turns the links of the subtree `clip` as reroot_links does, and makes `down` and `unions` on the
/// path. `final` of the path's nodes is zeroed, so that the wave after attaching `clip` remakes it:
/// until then `branch` sets in the subtree are those of the old rooting.
void reroot_subtree(search_data& data, int node, int clip);

}  // namespace zeb
