// The tree that a walk over trees makes for its script, as the last one in memory.
#pragma once

#include <string>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// Takes a slot with the first tree, and gives it back with the end, unless `keep` is called. What
/// the script does to the trees in memory meanwhile is its business: trees that it adds stay.
class working_tree {
 public:
  /// `no_space`: the error where there is no slot, before the number of the tree.
  explicit working_tree(std::string no_space);
  ~working_tree();
  working_tree(const working_tree&) = delete;
  working_tree& operator=(const working_tree&) = delete;

  /// Makes it that tree, and the last one. Error where other data were read meanwhile.
  void put(const_tree_span tree);
  void keep() { number_ = -1; }

 private:
  bool is_there() const;
  void remove() noexcept;

  std::string no_space_;
  int nodes_;                    // cells of a tree of these data
  int number_ = -1;              // in the buffer; -1 none
  std::vector<tree_node> tree_;  // as it was put there
};

}  // namespace zeb
