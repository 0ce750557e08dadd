#include "consensus/candidate_tree.h"

#include "base/indices.h"
#include "consensus/group_tree.h"

namespace zeb {

candidate_tree::candidate_tree(int ntax, std::span<const std::uint8_t> left_out)
    : ntax_(ntax),
      tree_(bush(ntax, left_out).tree),
      counter_(at(2 * ntax), 0),
      size_(at(2 * ntax), 1),
      filled_(at(2 * ntax), 0),
      matcher_(ntax, left_out) {
  tree_[at(ntax)] = 2 * ntax - 1;
  for (int n = 2 * ntax - 2; n > ntax; --n) {
    tree_[at(n)] = -1;
    free_.push_back(n);
  }
}

void candidate_tree::take(const_tree_span tree) {
  matcher_.set_reference(tree_);
  matcher_.match(tree, {});
  drop_and_count(matcher_.reference_preorder(), matcher_.matched());
  for (const int node : matcher_.reference_preorder())
    size_[at(node)] = matcher_.reference_size(node);
  for (const int node : matcher_.unmatched_nodes()) enter(matcher_.terminals_below(node));
}

void candidate_tree::drop_and_count(const std::vector<int>& rootward_first,
                                    const std::vector<std::uint8_t>& matched) {
  for (const int n : rootward_first)
    if (n > ntax_) counter_[at(n)] += matched[at(n)] ? 1 : -1;
  for (const int n : rootward_first) {
    if (n == ntax_) continue;
    const int above = tree_[at(n)];
    if (above != ntax_ && counter_[at(above)] == 0) tree_[at(n)] = tree_[at(above)];
  }
  for (const int n : rootward_first)
    if (n > ntax_ && counter_[at(n)] == 0) {
      tree_[at(n)] = -1;
      free_.push_back(n);
    }
}

/// A group fits if the largest groups inside it are all descendants of one node, which is larger.
void candidate_tree::enter(std::span<const int> group) {
  touched_.clear();
  for (const int terminal : group) {
    int node = terminal;
    int terminals = 1;
    while (true) {
      if (filled_[at(node)] == 0) touched_.push_back(node);
      filled_[at(node)] += terminals;
      if (node == ntax_ || filled_[at(node)] < size_[at(node)]) break;
      terminals = size_[at(node)];
      node = tree_[at(node)];
    }
  }
  const auto is_full = [&](int node) { return filled_[at(node)] == size_[at(node)]; };
  int above = -1;
  bool fits = true;
  for (const int node : touched_) {
    if (node == ntax_ || !is_full(node) || is_full(tree_[at(node)])) continue;
    fits = fits && (above < 0 || above == tree_[at(node)]);
    above = tree_[at(node)];
  }
  if (fits && above >= 0) {
    const int joint = free_.back();
    free_.pop_back();
    for (const int node : touched_)
      if (node != ntax_ && tree_[at(node)] == above && is_full(node)) tree_[at(node)] = joint;
    tree_[at(joint)] = above;
    counter_[at(joint)] = 1;
    size_[at(joint)] = static_cast<int>(group.size());
  }
  for (const int node : touched_) filled_[at(node)] = 0;
}

}  // namespace zeb
