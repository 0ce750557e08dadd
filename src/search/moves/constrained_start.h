// Help for a builder that comes to no tree without breaking constraints.
#pragma once

#include <optional>

#include "search/search_context.h"

namespace zeb {

/// Constraints that leave no taxon afloat: a tree that has all positive groups, and the negative
/// groups as they are. Under them no taxon that is added gets in the way of another. Nothing where
/// no terminal is fixed in all positive groups, or no tree has them all.
std::optional<constraint_rows> without_floating(const constraint_rows& rows);

/// Makes the tree in work one that the constraints of the search allow, whatever it costs, and its
/// sets. Places are tried in turn, and taken back where a later taxon finds none; floating taxa
/// come last. False, with no tree, where there is none, or none was found within the trials
/// allowed.
bool find_constrained_tree(search_context& context);

}  // namespace zeb
