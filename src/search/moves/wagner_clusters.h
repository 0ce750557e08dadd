// Additions to a tree cut into node clusters, for many taxa: a cluster whose union is too far from
// the taxon is passed over as a whole.
#pragma once

#include "search/moves/wagner_build.h"

namespace zeb {

/// Adds the taxa from `position` on, in sequence.
void add_by_clusters(wagner_build& build, int position);

}  // namespace zeb
