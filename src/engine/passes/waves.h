// Waves: repair of the node sets where the tree in work changed.
//
// A clip or an insertion changes sets near its place, and further away ever fewer of them. A wave
// takes one vector of words after the other through the tree, each only as far as this vector
// changes (Gladstein 1997). Rootward from the place, preliminary sets are remade until they come
// out as stored: what lies below depends on nothing else in the subtree, so it stays as it is. From
// the highest node that changed the wave turns back. Final sets are remade along the path just
// walked, whose preliminary sets are new, and off the path below each node whose final sets came
// out different. A node's `branch` sets go with its own final sets or its ancestor's.
//
// Before a wave the sets of the whole tree were right, or those of its two parts, each as a tree of
// its own; only links were changed. After it every set is what a full pass would make, word for
// word, in both parts of a clipped tree. The joint that a clip sets free is in neither part, and
// its sets mean nothing. A turned subtree has its preliminary sets made at once, while its final
// sets are marked as wrong for the wave that attaches it. Tests compare all sets with those of full
// passes after random moves in all widths; asking for less, such as sets that are only good enough
// to cost moves by, would leave nothing to compare.
//
// A wave stops because a set is a function of its neighbours' sets: where a remade one equals
// the stored one, nothing beyond can differ on its account. The preliminary sets and the unions of
// the descendants are compared together, since the final pass reads both. A vector holds many
// characters and goes as far as the one that changes furthest; narrower vectors go less far, but
// there are more of them. On 500 taxa a clip repaired and undone in the widest form takes a
// fiftieth of a full pass. A walk over nodes that takes all words of each along has to go as far as
// the furthest character of all, which on large data is most of the way to the root.
//
// Most clips lead to nothing and are put back. A second wave would walk the whole way again to find
// values that were there before, so waves note what they overwrite (undo.h), and the clip is undone
// by copying.
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
