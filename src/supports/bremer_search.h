// Bremer supports by searches: for each group, one for the best trees that lack it, which a
// negative constraint keeps out. Exact where the search is, while trees close to the reference only
// bound the supports from above.
#pragma once

#include "supports/bremer_requests.h"

namespace zeb {

/// The groups of the best of the trees asked for. Each tree that a search finds counts for all
/// groups that it lacks. An interrupt ends the search that runs and those to come. Trees,
/// constraints, settings and results of former searches are then what they were. Errors: those of
/// the searches; the outgroup is to be cut off.
bremer_result supports_by_searching(const bremer_request& request);

}  // namespace zeb
