// A tree that breaks no constraint, where the builder came to none.
#pragma once

#include "search/search_context.h"

namespace zeb {

/// Makes the tree in work one that the constraints of the search allow, whatever it costs, and its
/// sets. Places are tried in turn, and taken back where a later taxon finds none; floating taxa
/// come last. False, with no tree, where there is none, or none was found within the trials
/// allowed.
bool find_constrained_tree(search_context& context);

}  // namespace zeb
