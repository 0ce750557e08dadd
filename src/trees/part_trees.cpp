#include "trees/part_trees.h"

#include <utility>

#include "base/arena.h"
#include "base/indices.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

tree_store empty_buffer(const tree_store& whole, int capacity) {
  tree_store part;
  part.nnodes = matrix.nnodes;
  part.maxtrees = capacity;
  part.group_words = whole.group_words;
  part.include_absent = whole.include_absent;
  part.capacity_scopes = whole.capacity_scopes + 1;
  part.trees = alloc_table_low<tree_node>(at(capacity), at(matrix.nnodes));
  part.group_rows = calloc_table_low<std::uint32_t>(at(capacity), at(whole.group_words));
  part.vault.nnodes = matrix.nnodes;
  return part;
}

}  // namespace

part_trees_scope::part_trees_scope(int capacity)
    : groups_(tree_groups),
      constraints_(constraints),
      tags_(tags),
      seconds_between_savings_(auto_save.seconds) {
  trees_ = std::exchange(store, empty_buffer(store, capacity));
  constraints = {};
  tags = {};
  auto_save.seconds = 0;
}

part_trees_scope::~part_trees_scope() {
  store = std::move(trees_);
  tree_groups = std::move(groups_);
  constraints = std::move(constraints_);
  tags = std::move(tags_);
  auto_save.seconds = seconds_between_savings_;
}

}  // namespace zeb
