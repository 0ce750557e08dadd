#include "distances/matching/shape_matching.h"

#include <algorithm>
#include <utility>

#include "base/indices.h"
#include "distances/best_matching.h"

namespace zeb {
namespace {

using node_pair = std::pair<int, int>;

class shape_table {
 public:
  shape_table(const cut_tree& a, const cut_tree& b)
      : a_(a), b_(b), width_(b.sizes.size()), within_(a.sizes.size() * width_, 0), best_(within_) {
    for (auto v = a_.outward.rbegin(); v != a_.outward.rend(); ++v)
      for (auto w = b_.outward.rbegin(); w != b_.outward.rend(); ++w) fill(*v, *w);
  }

  /// Pairs of clades that could be one, each before those within it.
  std::vector<node_pair> pairs() const {
    std::vector<node_pair> found, waiting{{a_.root(), b_.root()}};
    while (!waiting.empty()) {
      const auto [v, w] = waiting.back();
      waiting.pop_back();
      const int value = best_[place(v, w)];
      if (value == 0) continue;
      if (value == within_[place(v, w)] + may_be_one(v, w)) {
        if (may_be_one(v, w)) found.emplace_back(v, w);
        const std::vector<node_pair> parts = partners(v, w);
        waiting.insert(waiting.end(), parts.begin(), parts.end());
      } else {
        waiting.push_back(smaller_pair(v, w, value));
      }
    }
    return found;
  }

 private:
  std::size_t place(int v, int w) const { return at(v) * width_ + at(w); }
  bool may_be_one(int v, int w) const {
    const int more = b_.sizes[at(w)] - a_.sizes[at(v)];
    return v != a_.root() && a_.sizes[at(v)] > 1 && more >= 0 &&
           more <= b_.terminals - a_.terminals;
  }

  /// The descendants as they are matched.
  std::vector<node_pair> partners(int v, int w) const {
    std::vector<int> values, rows, columns;
    for (const int child : a_.children(v)) rows.push_back(child);
    for (const int child : b_.children(w)) columns.push_back(child);
    for (const int r : rows)
      for (const int c : columns) values.push_back(best_[place(r, c)]);
    const std::vector<int> column_of =
        best_matching(values, static_cast<int>(rows.size()), static_cast<int>(columns.size()));
    std::vector<node_pair> out;
    for (std::size_t r = 0; r < rows.size(); ++r)
      if (column_of[r] >= 0) out.emplace_back(rows[r], columns[at(column_of[r])]);
    return out;
  }

  void fill(int v, int w) {
    int sum = 0;
    for (const node_pair& parts : partners(v, w)) sum += best_[place(parts.first, parts.second)];
    within_[place(v, w)] = sum;
    int most = sum + may_be_one(v, w);
    for (const int child : a_.children(v)) most = std::max(most, best_[place(child, w)]);
    for (const int child : b_.children(w)) most = std::max(most, best_[place(v, child)]);
    best_[place(v, w)] = most;
  }

  /// One of the nodes with a descendant of the other that is worth as much.
  node_pair smaller_pair(int v, int w, int value) const {
    for (const int child : a_.children(v))
      if (best_[place(child, w)] == value) return {child, w};
    for (const int child : b_.children(w))
      if (best_[place(v, child)] == value) return {v, child};
    return {v, w};
  }

  const cut_tree& a_;
  const cut_tree& b_;
  std::size_t width_;
  std::vector<int> within_;  // clades within the pair of nodes that could be one
  std::vector<int> best_;    // the same with the pair itself, or with descendants in its place
};

void add_terminals(const cut_tree& tree, int node, std::vector<int>& terminals) {
  if (node < tree.terminals) terminals.push_back(node);
  for (const int child : tree.children(node)) add_terminals(tree, child, terminals);
}

}  // namespace

std::vector<int> map_by_shape(const cut_tree& a, const cut_tree& b) {
  std::vector<node_pair> pairs = shape_table(a, b).pairs();
  pairs.insert(pairs.begin(), {a.root(), b.root()});
  std::vector<int> map(at(a.terminals), -1);
  std::vector<char> taken(at(b.terminals), 0);
  // From the inner pairs out, what isn't matched yet is matched in order.
  for (auto pair = pairs.rbegin(); pair != pairs.rend(); ++pair) {
    std::vector<int> in_a, in_b;
    add_terminals(a, pair->first, in_a);
    add_terminals(b, pair->second, in_b);
    std::erase_if(in_a, [&](int t) { return map[at(t)] >= 0; });
    std::erase_if(in_b, [&](int t) { return taken[at(t)]; });
    for (std::size_t i = 0; i < std::min(in_a.size(), in_b.size()); ++i) {
      map[at(in_a[i])] = in_b[i];
      taken[at(in_b[i])] = 1;
    }
  }
  return map;
}

}  // namespace zeb
