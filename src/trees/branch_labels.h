// What is known of the branches of trees in memory beyond the trees themselves: supports and other
// labels, and lengths. They come with trees from files and from consensus commands.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// Of the branch below a node.
struct branch_label {
  std::string label;   // a support, a name of the clade; empty: none
  std::string length;  // as it was read; empty: none
  bool empty() const { return label.empty() && length.empty(); }
  bool operator==(const branch_label&) const = default;
  /// As a tag: "label", "length", or "label/length".
  std::string text() const {
    return label.empty() || length.empty() ? label + length : label + "/" + length;
  }
};

/// Labels lie beside the arena, in a small part of what `mxram` gives.
struct label_memory_state {
  std::size_t bytes = 0;  // of all labels that somebody holds
  bool full = false;      // labels had to be dropped, and a warning said so
};
extern label_memory_state label_memory;

/// The labels of one tree, in few bytes.
struct tree_labels {
  tree_labels(std::uint64_t tree, std::string all_texts);
  ~tree_labels();
  tree_labels(const tree_labels&) = delete;
  tree_labels& operator=(const tree_labels&) = delete;

  const std::uint64_t tree_hash;  // of the tree that they belong to
  const std::string texts;        // label and length of each node, each ended by a zero byte
};

/// Gives stored tree `number` labels, by node, or takes away those it has where `labels` says
/// nothing. Labels that there is no memory for are dropped with a warning.
void label_tree(int number, std::span<const branch_label> labels);
/// By node of the stored tree, `nnodes` of them; none at all where the tree has no labels, or has
/// changed since it got them.
std::vector<branch_label> labels_of_tree(int number);
/// Has any tree in memory labels?
bool any_tree_labelled();

/// The labels of `from` on the branches of `to` that part the same terminals, wherever the roots
/// are. Two branches at a root with two descendants are one: from there the label goes to both and
/// the length to the smaller side, and it is their sum that is taken. A label of the root belongs
/// to no branch and is dropped. Empty where the trees have different terminals.
std::vector<branch_label> labels_on_branches(const_tree_span from,
                                             std::span<const branch_label> labels,
                                             const_tree_span to, int ntax);

/// Keeps the labels of a stored tree while it is rerooted or condensed: made before the change.
class labels_in_change {
 public:
  explicit labels_in_change(int number);
  /// After the change: labels of branches that are there still go with them.
  void put_back() const;

 private:
  int number_;
  std::vector<branch_label> labels_;
  std::vector<tree_node> tree_;  // before the change; empty without labels
};

}  // namespace zeb
