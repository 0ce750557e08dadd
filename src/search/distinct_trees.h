// What a search leaves in memory, in numbers that can be published.
#pragma once

namespace zeb {

/// Tells how many trees are in memory, and how many of them differ once every branch is collapsed
/// that may have no length in some reconstruction. Looks at the first trees only where all would
/// take long. Says nothing of fewer than two trees, nor when the user ended the search.
void tell_distinct_trees();

}  // namespace zeb
