#include "consensus/cluster_matcher.h"

#include <algorithm>
#include <limits>

#include "base/indices.h"

namespace zeb {

cluster_matcher::cluster_matcher(int ntax, std::span<const std::uint8_t> ignored)
    : ntax_(ntax),
      ignored_(ignored.begin(), ignored.end()),
      rank_(at(ntax), -1),
      low_(at(2 * ntax), 0),
      high_(at(2 * ntax), 0),
      by_low_(at(ntax), -1),
      by_high_(at(ntax), -1),
      matched_(at(2 * ntax), 0),
      begin_(at(2 * ntax), 0),
      end_(at(2 * ntax), 0) {
  ignored_.resize(at(ntax), 0);
}

/// Nodes in preorder, descendants by number.
void cluster_matcher::walk(const_tree_span tree, std::vector<int>& preorder) {
  const int limit = node_limit(tree, ntax_);
  const auto is_in = [&](int n) {
    return n < ntax_ ? !is_absent(tree, n) : n > ntax_ && tree[at(n)] >= 0;
  };
  first_.assign(at(limit) + 2, 0);
  for (int n = 0; n < limit; ++n)
    if (is_in(n)) ++first_[at(tree[at(n)]) + 2];
  for (std::size_t n = 2; n < first_.size(); ++n) first_[n] += first_[n - 1];
  children_.resize(at(first_.back()));
  for (int n = 0; n < limit; ++n)
    if (is_in(n)) children_[at(first_[at(tree[at(n)]) + 1]++)] = n;
  preorder.clear();
  stack_.assign(1, ntax_);
  while (!stack_.empty()) {
    const int node = stack_.back();
    stack_.pop_back();
    preorder.push_back(node);
    for (int i = first_[at(node) + 1]; i-- > first_[at(node)];) stack_.push_back(children_[at(i)]);
  }
}

void cluster_matcher::set_reference(const_tree_span tree) {
  walk(tree, reference_preorder_);
  std::fill(rank_.begin(), rank_.end(), -1);
  terminals_ = 0;
  for (const int n : reference_preorder_) {
    low_[at(n)] = terminals_;
    if (n < ntax_) rank_[at(n)] = terminals_++;
    high_[at(n)] = terminals_ - 1;
  }
  for (auto n = reference_preorder_.rbegin(); n != reference_preorder_.rend(); ++n)
    if (*n != ntax_) high_[at(tree[at(*n)])] = std::max(high_[at(tree[at(*n)])], high_[at(*n)]);
  std::fill_n(by_low_.begin(), terminals_, -1);
  std::fill_n(by_high_.begin(), terminals_, -1);
  // A node that is its ancestor's first descendant is the largest interval that ends at its end;
  // any other node is the largest that begins at its beginning.
  for (const int n : reference_preorder_) {
    if (n <= ntax_) continue;
    if (low_[at(n)] == low_[at(tree[at(n)])] && tree[at(n)] != ntax_)
      by_high_[at(high_[at(n)])] = n;
    else
      by_low_[at(low_[at(n)])] = n;
  }
}

void cluster_matcher::match(const_tree_span tree, std::span<const std::uint8_t> weights) {
  walk(tree, preorder_);
  std::fill(matched_.begin(), matched_.end(), std::uint8_t{0});
  unmatched_.clear();
  tree_terminals_.clear();
  constexpr int above_all = std::numeric_limits<int>::max() / 2;
  std::vector<int>& least = stack_;  // by node: lowest and highest rank, and terminals, below
  std::vector<int>& most = first_;
  std::vector<int>& count = children_;
  least.assign(begin_.size(), above_all);
  most.assign(begin_.size(), -1);
  count.assign(begin_.size(), 0);
  for (const int n : preorder_) {
    begin_[at(n)] = end_[at(n)] = static_cast<int>(tree_terminals_.size());
    if (n >= ntax_ || ignored_[at(n)]) continue;
    tree_terminals_.push_back(n);
    ++end_[at(n)];
    count[at(n)] = 1;
    // A terminal that the reference lacks spoils the interval of every group around it.
    least[at(n)] = rank_[at(n)];
    most[at(n)] = rank_[at(n)] >= 0 ? rank_[at(n)] : above_all;
  }
  for (auto i = preorder_.rbegin(); *i != ntax_; ++i) {
    const std::size_t n = at(*i);
    const std::size_t above = at(tree[n]);
    end_[above] = std::max(end_[above], end_[n]);
    least[above] = std::min(least[above], least[n]);
    most[above] = std::max(most[above], most[n]);
    count[above] += count[n];
    if (*i < ntax_ || count[n] < 2 || (!weights.empty() && !weights[n])) continue;
    if (most[n] - least[n] + 1 == count[n]) {
      if (count[n] == terminals_) continue;
      const int found = node_of_interval(least[n], most[n]);
      if (found >= 0) {
        matched_[at(found)] = 1;
        continue;
      }
    }
    unmatched_.push_back(*i);
  }
}

int cluster_matcher::node_of_interval(int low, int high) const {
  for (const int node : {by_low_[at(low)], by_high_[at(high)]})
    if (node >= 0 && low_[at(node)] == low && high_[at(node)] == high) return node;
  return -1;
}

}  // namespace zeb
