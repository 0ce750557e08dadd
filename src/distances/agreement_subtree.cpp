#include "distances/agreement_subtree.h"

#include <algorithm>

#include "base/indices.h"
#include "distances/best_matching.h"

namespace zeb {
namespace {

// The number of terminals in the best agreement subtree of each pair of clades.
class agreement_table {
 public:
  agreement_table(const cut_tree& a, const cut_tree& b)
      : a_(a), b_(b), width_(b.sizes.size()), best_(a.sizes.size() * width_, 0) {
    for (int t = 0; t < a_.terminals; ++t) {
      for (int w = t; w != b_.root(); w = b_.ancestors[at(w)]) best(t, w) = 1;
      best(t, b_.root()) = 1;
      for (int v = t; v != a_.root(); v = a_.ancestors[at(v)]) best(v, t) = 1;
      best(a_.root(), t) = 1;
    }
    for (auto v = a_.outward.rbegin(); v != a_.outward.rend(); ++v)
      for (auto w = b_.outward.rbegin(); w != b_.outward.rend(); ++w)
        best(*v, *w) = best_of(*v, *w);
  }

  int size() const { return best(a_.root(), b_.root()); }

  std::vector<int> terminals() {
    std::vector<int> kept;
    collect(kept);
    std::ranges::sort(kept);
    return kept;
  }

 private:
  int& best(int v, int w) { return best_[at(v) * width_ + at(w)]; }
  int best(int v, int w) const { return best_[at(v) * width_ + at(w)]; }

  int best_of(int v, int w) {
    int most = 0;
    for (const int child : a_.children(v)) most = std::max(most, best(child, w));
    for (const int child : b_.children(w)) most = std::max(most, best(v, child));
    return std::max(most, matched(v, w));
  }

  /// The sum of the best matching of the descendants.
  int matched(int v, int w) {
    if (a_.lists.count[at(v)] == 2 && b_.lists.count[at(w)] == 2) {
      const int first = a_.lists.first[at(v)], second = a_.lists.sibling[at(first)];
      const int left = b_.lists.first[at(w)], right = b_.lists.sibling[at(left)];
      return std::max(best(first, left) + best(second, right),
                      best(first, right) + best(second, left));
    }
    int sum = 0;
    const std::vector<int> partner = partners(v, w);
    int i = 0;
    for (const int child : a_.children(v)) {
      if (partner[at(i)] >= 0) sum += best(child, partner[at(i)]);
      ++i;
    }
    return sum;
  }

  /// For each descendant of v its partner among those of w; -1 none.
  std::vector<int> partners(int v, int w) {
    std::vector<int> values, columns;
    for (const int other : b_.children(w)) columns.push_back(other);
    for (const int child : a_.children(v))
      for (const int other : columns) values.push_back(best(child, other));
    std::vector<int> partner = best_matching(values, a_.lists.count[at(v)], b_.lists.count[at(w)]);
    for (int& p : partner)
      if (p >= 0) p = columns[at(p)];
    return partner;
  }

  /// Goes back along what the values came from.
  void collect(std::vector<int>& kept) {
    std::vector<std::pair<int, int>> waiting{{a_.root(), b_.root()}};
    while (!waiting.empty()) {
      const int v = waiting.back().first;
      const int w = waiting.back().second;
      waiting.pop_back();
      const int value = best(v, w);
      if (value == 0) continue;
      if (v < a_.terminals || w < b_.terminals) {
        kept.push_back(std::min(v, w));
        continue;
      }
      const int lower_v = child_with(a_, v, [&](int child) { return best(child, w) == value; });
      const int lower_w = child_with(b_, w, [&](int child) { return best(v, child) == value; });
      if (lower_v >= 0) {
        waiting.emplace_back(lower_v, w);
      } else if (lower_w >= 0) {
        waiting.emplace_back(v, lower_w);
      } else {
        const std::vector<int> partner = partners(v, w);
        int i = 0;
        for (const int child : a_.children(v)) {
          if (partner[at(i)] >= 0) waiting.emplace_back(child, partner[at(i)]);
          ++i;
        }
      }
    }
  }
  template <class function>
  static int child_with(const cut_tree& tree, int node, const function& holds) {
    for (const int child : tree.children(node))
      if (holds(child)) return child;
    return -1;
  }

  const cut_tree& a_;
  const cut_tree& b_;
  std::size_t width_;
  std::vector<int> best_;
};

cut_tree rooted_at(const cut_tree& tree, int terminal) {
  std::vector<tree_node> record = tree.ancestors;
  reroot_tree(record, tree.terminals, terminal);
  return {record, tree.terminals};
}

}  // namespace

std::vector<int> agreement_subtree(const cut_tree& a, const cut_tree& b) {
  return agreement_table(a, b).terminals();
}

std::vector<int> unrooted_agreement_subtree(const cut_tree& a, const cut_tree& b,
                                            const std::function<void(double)>& poll) {
  std::vector<int> kept;
  for (int t = 0; t < a.terminals; ++t) {
    const int to_try = a.terminals - static_cast<int>(kept.size());
    if (t >= to_try) break;
    poll(static_cast<double>(t) / to_try);
    const cut_tree rooted_a = rooted_at(a, t);
    const cut_tree rooted_b = rooted_at(b, t);
    agreement_table table(rooted_a, rooted_b);
    if (table.size() > static_cast<int>(kept.size())) kept = table.terminals();
  }
  return kept;
}

common_subtree common_agreement_subtree(const std::vector<cut_tree>& trees, bool unrooted, int runs,
                                        random_generator& generator,
                                        const std::function<void(double)>& poll) {
  const int n = trees.front().terminals;
  const auto agreement = [&](const cut_tree& a, const cut_tree& b) {
    return unrooted ? unrooted_agreement_subtree(a, b, poll) : agreement_subtree(a, b);
  };
  const auto cut = [n](const cut_tree& tree, const taxon_set& kept) {
    return cut_tree(cut_to_taxa(tree.ancestors, n, kept), kept.count());
  };
  common_subtree best;
  best.at_most = n;
  std::vector<int> order(trees.size());
  for (int run = 0; run < runs && !best.is_exact(); ++run) {
    random_sequence(generator, static_cast<int>(order.size()), order, -1, {});
    taxon_set kept(n);
    kept.fill();
    for (std::size_t i = 1; i < order.size() && kept.count() > 1; ++i) {
      poll((run + static_cast<double>(i) / static_cast<double>(order.size())) / runs);
      const std::vector<int> numbers = members_of(kept);
      const std::vector<int> agreed =
          agreement(cut(trees[at(order[0])], kept), cut(trees[at(order[i])], kept));
      kept.clear();
      for (const int t : agreed) kept.insert(numbers[at(t)]);
      if (i == 1) best.at_most = std::min(best.at_most, kept.count());
    }
    if (kept.count() > static_cast<int>(best.terminals.size())) best.terminals = members_of(kept);
  }
  return best;
}

}  // namespace zeb
