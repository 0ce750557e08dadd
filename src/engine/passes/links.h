// The links of the tree in work: attaching, detaching and turning subtrees. No sets are touched.
#pragma once

#include "engine/search_data.h"

namespace zeb {

/// Rebuilds sister and descendant arrays from data.tree.anc.
void rebuild_links(search_data& data);

/// Attach `node` (with `joint` as the internal node to use) on the branch below `target`; detach
/// the reverse. Keep all four arrays. No sets are touched. `target` is neither the root nor
/// terminal 0 (whose branch is that of its sister); `node` becomes the second descendant of the
/// joint.
void attach(tree_arrays& tree, int node, int joint, int target);
/// Returns the joint freed, which anc[node] still names; the sister takes its place. `node` is no
/// descendant of the root.
int detach(tree_arrays& tree, int node);
/// Turns the links of the subtree `clip` (detached, or the sister of terminal 0) so that `clip`
/// lies on the branch above `node` (a node of the subtree below a descendant of `clip`); no-op
/// where it does already. No sets.
void reroot_links(tree_arrays& tree, int node, int clip);

}  // namespace zeb
