// What a move costs and meets beyond the packed sets. The slots of a context are bound when it is
// made, by what its data have; unbound, they cost one test for each candidate that passes the
// kernels.
#pragma once

#include "engine/search_data.h"

namespace zeb {

/// What is joined: a branch of the clipped subtree (or a taxon to be added) or a cluster of them,
/// with a branch of the main tree or a cluster of those.
enum class joining { nodes, node_with_cluster, clusters };

struct move_slots {
  /// Cost of joining in characters that the packed sets don't hold (step matrices, continuous
  /// ones). The sides are node or, by `level`, cluster numbers; the cost of a cluster is at most
  /// that of each of its nodes. A result above `bound` need not be exact.
  double (*wide_cost)(const search_data& data, joining level, int clip_side, int main_side,
                      double bound) = nullptr;
  /// Would the clip, joined by its branch `root` to the branch `target`, break a constraint?
  bool (*forbids)(const search_data& data, int clip, int root, int target) = nullptr;

  bool any() const { return wide_cost || forbids; }
};

/// Called with the packed data of each context that is made.
using slot_binder = void (*)(const search_data& data, move_slots& slots);

}  // namespace zeb
