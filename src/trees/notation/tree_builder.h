// A tree put together node by node, as a reader of nested parentheses meets its parts.
#pragma once

#include <vector>

#include "base/indices.h"
#include "trees/tree_record.h"

namespace zeb {

/// The tree begins as an empty root, which is also the first current node. Numbers of internal
/// nodes go up from `ntax` in the order of opening; `finish` gives the normal form. One builder
/// serves any number of trees, so its memory is taken once.
class tree_builder {
 public:
  explicit tree_builder(int ntax);

  /// Forgets the tree; its only node is the root.
  void begin();
  /// A new internal node below the current one becomes current; at the very start, the root itself
  /// is what opens. Error for more than three times as many nodes as a tree can have.
  void open_node();
  /// Back to the ancestor of the current node. False where the current node is the root.
  bool close_node();
  /// Adds the terminal to the current node. Error for one met before.
  void add_terminal(int taxon);
  /// Adds a copy of a clade of another tree, as one node.
  void add_subtree(const_tree_span tree, int node);

  bool holds(int taxon) const { return up_[at(taxon)] >= 0; }
  bool empty() const { return terminals_ == 0; }
  bool untouched() const { return terminals_ == 0 && opened_ == 0; }
  /// The root was opened by a parenthesis of its own, as against standing there implied.
  bool root_opened() const { return root_opened_; }
  bool at_root() const { return current_ == ntax_; }
  /// What was added or closed last: the node that a label or tag after it belongs to.
  int last_node() const { return last_; }
  /// The terminal met first below the current node or, if it has none, the last one met; -1
  /// without terminals.
  int terminal_near_current() const;

  /// Writes the record in normal form, without empty and single-descendant nodes. With
  /// `include_absent` the taxa left out join the tree at a new root. `new_numbers` receives the
  /// number in the record of each node of the builder, -1 for nodes that are gone.
  void finish(tree_span record, bool include_absent, std::vector<int>* new_numbers = nullptr);

 private:
  int new_node(int ancestor);

  int ntax_;
  int current_ = 0;
  int last_ = 0;
  int last_terminal_ = -1;
  int terminals_ = 0;
  std::int64_t opened_ = 0;  // opening parentheses
  bool root_opened_ = false;
  std::vector<int> up_;              // ancestors; -1 the root and absent terminals
  std::vector<int> first_terminal_;  // by internal node less ntax: terminal met first, -1 none
};

}  // namespace zeb
