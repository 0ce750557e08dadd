// Places where trees are kept: the tree buffer is one, a search may have another of its own.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "base/indices.h"
#include "trees/tree_record.h"

namespace zeb {

struct tree_labels;

/// Slots for trees, numbered from 0 by position. Written by the functions below and by those that
/// lay the slots out; who owns the memory is the owner's business.
struct tree_slots {
  std::span<tree_node*> trees;  // `maxtrees` slots of `nnodes` ancestors each
  int maxtrees = 0;             // capacity
  int ntrees = 0;               // trees in use: the slots 0 to ntrees - 1
  int nnodes = 0;               // cells of a slot; 0 without data
  bool cut_short = false;       // the search that left these trees ended with all slots full

  std::span<std::uint32_t*> group_rows;  // maxtrees rows of membership bits; empty: no groups
  int group_words = 0;                   // 32-bit words of a row

  // Supports and lengths of the trees, see branch_labels.h. May be shorter; null: none.
  std::vector<std::shared_ptr<const tree_labels>> labels;
};

/// Cells of slot `number`, which must be below `maxtrees`, to be read or written anew. The span is
/// good until the capacity changes.
inline tree_span slot_of(const tree_slots& slots, int number) {
  return {slots.trees[at(number)], at(slots.nnodes)};
}

/// The trees in slots 0 to `count` - 1 are those in use from now on. What is in slots that come
/// into use has been written before; they are in no group.
void set_tree_count(tree_slots& slots, int count);
/// Keeps the flagged trees, in order; group bits and labels move with them.
void select_trees(tree_slots& slots, std::span<const std::uint8_t> keep);
/// Puts the trees in another order: tree order[i] becomes tree i. Group bits and labels move with
/// them.
void reorder_trees(tree_slots& slots, std::span<const int> order);

/// Gives the tree in slot `there` of `to` the labels of the same tree in slot `here` of `from`.
void copy_labels(const tree_slots& from, int here, tree_slots& to, int there);

/// Slots in memory of their own, for trees that are in no groups.
class private_slots : public tree_slots {
 public:
  private_slots(int capacity, int cells);
  private_slots(const private_slots&) = delete;
  private_slots& operator=(const private_slots&) = delete;

 private:
  std::vector<tree_node> cells_;
  std::vector<tree_node*> rows_;
};

}  // namespace zeb
