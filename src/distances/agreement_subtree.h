// The largest agreement subtree of two trees: the most terminals on which both are the same tree.
#pragma once

#include <functional>
#include <vector>

#include "base/random.h"
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

struct common_subtree {
  std::vector<int> terminals;  // increasing
  int at_most = 0;             // no agreement subtree of two of the trees has more
  bool is_exact() const { return static_cast<int>(terminals.size()) == at_most; }
};
/// An agreement subtree of two or more trees of the same terminals. They are taken one after the
/// other, each with what the ones before it agree on, in several random orders; the largest result
/// stays.
common_subtree common_agreement_subtree(const std::vector<cut_tree>& trees, bool unrooted, int runs,
                                        random_generator& generator,
                                        const std::function<void(double)>& poll);

}  // namespace zeb
