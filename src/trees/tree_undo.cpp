#include "trees/tree_undo.h"

#include <algorithm>
#include <utility>

#include "base/indices.h"

namespace zeb {

tree_undo::tree_undo(std::span<const std::uint8_t> flagged)
    : labels_(store.labels), groups_(tree_groups), count_(store.ntrees) {
  for (int t = 0; t < count_; ++t) {
    if (at(t) < flagged.size() && flagged[at(t)]) numbers_.push_back(t);
  }
  trees_.reserve(numbers_.size() * at(store.nnodes));
  memberships_.reserve(numbers_.size() * at(store.group_words));
  for (const int t : numbers_) {
    trees_.insert(trees_.end(), stored_tree(t).begin(), stored_tree(t).end());
    const std::uint32_t* const row = store.group_rows[at(t)];
    memberships_.insert(memberships_.end(), row, row + store.group_words);
  }
}

tree_undo::~tree_undo() {
  if (kept_) return;
  set_tree_count(store, count_);
  store.labels.swap(labels_);
  tree_groups = std::move(groups_);
  auto former = trees_.begin();
  auto membership = memberships_.begin();
  for (const int t : numbers_) {
    std::copy_n(former, store.nnodes, stored_tree(t).begin());
    former += store.nnodes;
    std::copy_n(membership, store.group_words, store.group_rows[at(t)]);
    membership += store.group_words;
  }
}

}  // namespace zeb
