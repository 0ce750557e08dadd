// The nodes of each cluster that a clip leaves in the main tree and takes into the subtree.
#pragma once

#include "search/moves/swap_run.h"

namespace zeb {

/// Lists the nodes of the clusters on both sides of the clip that is about to be detached.
void make_cluster_lists(swap_run& run);
/// Makes the lists those of the whole tree again.
void restore_cluster_lists(swap_run& run);

}  // namespace zeb
