// Characters with costs of changes between states (Sankoff and Rousseau 1975), as wide ones.
//
// `down` of a node has the cost of each state in its subtree, less the least one, which goes to the
// steps, and beside it what each state of the ancestor would pay for this node. With that second
// vector at the descendant, `final` can take the descendant's part off what its ancestor has.
// `final` is the cost of the whole tree by the node's state, less that of the best tree. `branch`
// has the cost of each state of a joint on the branch, and what each state of a node outside would
// pay for a clip that is joined there; so joining is the least sum of two vectors, one of the clip
// and one of the main tree. A cluster has the elementwise minima.
//
// Where going from one state to another costs something else than going back, the part of a clip on
// the far side of a joint must be counted as hanging from the joint. `final` of a node in a clip
// therefore has the cost of the clip as if rooted at this node; a word says so.
//
// A table where some way over a third state is cheaper than the change itself makes trees cheaper
// by joints on branches. Searches need costs of joining of at least 0: so each node with two
// descendants, and the root once more, is taken to cost what the best detour gains, and each taxon
// that much less.
#pragma once

#include "engine/wide/wide_kinds.h"

namespace zeb {

/// Costs of either direction alike, small, and without shorter detours: in half-words.
extern const wide_kind small_cost_vectors;
/// All others.
extern const wide_kind large_cost_vectors;

}  // namespace zeb
