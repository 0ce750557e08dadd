#include "search/moves/shared_clades.h"

#include <algorithm>

#include "base/indices.h"
#include "search/moves/walked_tree.h"

namespace zeb {
namespace {

/// The clades of a tree as intervals of its terminals in the order of the walk.
class clade_intervals {
 public:
  clade_intervals(std::span<const std::int32_t> tree, int n) : walk_(tree, n), rank_(at(n), -1) {
    low_.assign(tree.size(), n);
    high_.assign(tree.size(), -1);
    by_low_.assign(at(n), -1);
    by_high_.assign(at(n), -1);
    int rank = 0;
    for (const std::int32_t v : walk_.preorder)
      if (v < n) rank_[at(v)] = low_[at(v)] = high_[at(v)] = rank++;
    for (auto i = walk_.preorder.rbegin(); i != walk_.preorder.rend(); ++i) {
      const std::size_t v = at(*i);
      if (*i < n) continue;
      low_[v] = low_[at(walk_.first[v])];
      high_[v] = high_[at(walk_.second[v])];
    }
    // Of all clades that begin at a terminal at most one is a second descendant, and of those that
    // end there at most one a first.
    for (const std::int32_t v : walk_.preorder) {
      if (v < n) continue;
      if (walk_.first[at(tree[at(v)])] == v) {
        by_high_[at(high_[at(v)])] = v;
      } else {
        by_low_[at(low_[at(v)])] = v;
      }
    }
  }

  int rank(int terminal) const { return rank_[at(terminal)]; }
  /// -1: none.
  std::int32_t clade(int low, int high) const {
    const std::int32_t a = by_high_[at(high)];
    if (a >= 0 && low_[at(a)] == low) return a;
    const std::int32_t b = by_low_[at(low)];
    return b >= 0 && high_[at(b)] == high ? b : -1;
  }

 private:
  walked_tree walk_;
  std::vector<int> rank_, low_, high_, by_low_, by_high_;
};

}  // namespace

std::vector<shared_clade> shared_clades(std::span<const std::int32_t> target,
                                        std::span<const std::int32_t> source, int n) {
  const clade_intervals intervals(source, n);
  const walked_tree walk(target, n);
  struct range {
    int low, high, size;
    int forks;  // of the consensus node that this one becomes or is lost in
  };
  std::vector<range> ranges(target.size());
  std::vector<shared_clade> shared;
  for (auto i = walk.preorder.rbegin(); i != walk.preorder.rend(); ++i) {
    const std::int32_t v = *i;
    if (v < n) {
      const int rank = intervals.rank(v);
      ranges[at(v)] = {rank, rank, 1, 1};
      continue;
    }
    const range& a = ranges[at(walk.first[at(v)])];
    const range& b = ranges[at(walk.second[at(v)])];
    range& own = ranges[at(v)];
    own = {std::min(a.low, b.low), std::max(a.high, b.high), a.size + b.size, a.forks + b.forks};
    if (own.high - own.low + 1 != own.size || own.size == n - 1) continue;
    const std::int32_t other = intervals.clade(own.low, own.high);
    if (other < 0) continue;
    shared.push_back({v, other, own.size, own.forks});
    own.forks = 1;
  }
  return shared;
}

std::vector<std::int32_t> nodes_of_clade(std::span<const std::int32_t> tree, int n, int top) {
  const walked_tree walk(tree, n);
  std::vector<std::int32_t> nodes = {top};
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    for (const std::int32_t below : {walk.first[at(nodes[i])], walk.second[at(nodes[i])]})
      if (below >= n) nodes.push_back(below);
  }
  return nodes;
}

void copy_clade(std::span<std::int32_t> target, int top, std::span<const std::int32_t> source,
                int source_top, int n) {
  const std::vector<std::int32_t> own = nodes_of_clade(target, n, top);
  const std::vector<std::int32_t> other = nodes_of_clade(source, n, source_top);
  std::vector<std::int32_t> stands_for(source.size(), -1);
  for (std::size_t i = 0; i < other.size(); ++i) stands_for[at(other[i])] = own[i];
  for (int v = 1; v < static_cast<int>(source.size()); ++v) {
    if (v == source_top || v == n) continue;
    const std::int32_t above = stands_for[at(source[at(v)])];
    if (above >= 0) target[at(v < n ? v : stands_for[at(v)])] = above;
  }
}

}  // namespace zeb
