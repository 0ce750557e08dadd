// Changes of stored trees that are made as a whole or not at all.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {

/// Unless `keep` is called, with the end the flagged trees of the buffer with their groups and all
/// labels are again what they were, names of tree groups too, and trees that were added are gone.
/// Trees that aren't flagged may not go meanwhile.
class tree_undo {
 public:
  explicit tree_undo(std::span<const std::uint8_t> flagged);
  ~tree_undo();
  tree_undo(const tree_undo&) = delete;
  tree_undo& operator=(const tree_undo&) = delete;

  void keep() { kept_ = true; }

 private:
  std::vector<int> numbers_;
  std::vector<tree_node> trees_;            // one after the other
  std::vector<std::uint32_t> memberships_;  // rows of words, one after the other
  std::vector<std::shared_ptr<const tree_labels>> labels_;
  tree_group_state groups_;
  int count_;
  bool kept_ = false;
};

}  // namespace zeb
