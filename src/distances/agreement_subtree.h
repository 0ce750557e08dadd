// The largest agreement subtree of two trees: the most terminals on which both are the same tree.
#pragma once

#include <functional>
#include <vector>

#include "distances/cut_trees.h"

namespace zeb {

/// Trees of the same terminals. The terminals kept, increasing; polytomies must agree too, as
/// nodes of as many clades. Exact: for each pair of nodes the best is either that of one of them
/// with a descendant of the other, or the best matching of their descendants.
std::vector<int> agreement_subtree(const cut_tree& a, const cut_tree& b);
/// The same without the roots. Each such subtree is the rooted one of both trees rooted at one of
/// its terminals, so these are tried until those that are left can't be in a larger one. `poll` is
/// called between them with the share of the work done.
std::vector<int> unrooted_agreement_subtree(const cut_tree& a, const cut_tree& b,
                                            const std::function<void(double)>& poll);

}  // namespace zeb
