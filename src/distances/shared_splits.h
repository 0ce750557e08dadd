// The groups that trees share: Robinson-Foulds distances (Robinson and Foulds 1981) of many trees
// at once.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "trees/terminal_sets.h"
#include "trees/tree_record.h"

namespace zeb {

/// The groups of a tree of 2 to (terminals - 1) terminals, or with `unrooted` its divisions with 2
/// or more at each side, as sorted keys, each once.
std::vector<terminal_set_key> split_keys(const_tree_span tree, int ntax, bool unrooted);
/// How many keys two sorted lists have in common.
int keys_in_both(std::span<const terminal_set_key> a, std::span<const terminal_set_key> b);

/// For all pairs of trees of the same taxa the number of groups that they share, row by row.
///
/// Each distinct group has the list of its trees, and adds one to all pairs of the list. So the
/// cost is that of the groups that are shared, not of those that might be.
class shared_split_counts {
 public:
  /// `poll` is called now and then with the share of the work that is done.
  shared_split_counts(std::span<const const_tree_span> trees, int ntax, bool unrooted,
                      const std::function<void(double)>& poll);
  int groups_of(std::size_t tree) const { return groups_[tree]; }
  int shared(std::size_t a, std::size_t b) const {
    return static_cast<int>(counts_[a * groups_.size() + b]);
  }
  /// Groups in only one of the trees.
  int distance(std::size_t a, std::size_t b) const {
    return groups_of(a) + groups_of(b) - 2 * shared(a, b);
  }

 private:
  std::vector<int> groups_;
  std::vector<std::uint32_t> counts_;
};

}  // namespace zeb
