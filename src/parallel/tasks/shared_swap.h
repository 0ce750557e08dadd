// One tree swapped by all tasks of a job.
//
// The leader, task 0, has the best tree, and sends it to all others whenever there is a better one:
// a new version. The clips of a version are dealt out: each task swaps with its own share, going on
// from what it finds, until its share has nothing better or a version comes that is as good as what
// it has. Trees go to the leader when they are better than the last version. When every share of
// one version has nothing better, no clip of that tree has, and it is a local optimum. The share of
// a task that dies is dealt out with the next version.
#pragma once

#include "parallel/messages/contents.h"

namespace zeb {

/// Swaps the last tree in memory with the others. In the end the leader has the result in its
/// place, and the others don't have that tree any more.
void swap_with_siblings(const swap_orders& orders);

}  // namespace zeb
