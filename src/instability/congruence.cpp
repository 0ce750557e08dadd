#include "instability/congruence.h"

#include <algorithm>
#include <array>
#include <compare>
#include <cstdint>

#include "base/indices.h"
#include "base/interrupts.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

/// For each two branches how far from the root they part, in one resolution.
std::vector<std::uint16_t> depths_of_pairs(const_tree_span tree, int k) {
  const descendant_lists lists = descendants_of(tree, k);
  std::vector<std::uint16_t> depth(lists.nodes(), 0);
  std::vector<std::vector<int>> below(lists.nodes());
  const std::vector<int> outward = internal_nodes_root_first(lists, k);
  for (const int v : outward)
    for (const int child : lists.children(v))
      depth[at(child)] = static_cast<std::uint16_t>(depth[at(v)] + 1);
  std::vector<std::uint16_t> out(at(k) * at(k), 0);
  for (auto v = outward.rbegin(); v != outward.rend(); ++v) {
    std::vector<int>& own = below[at(*v)];
    for (const int child : lists.children(*v)) {
      const std::vector<int> of_child =
          child < k ? std::vector<int>{child} : std::move(below[at(child)]);
      for (const int a : own)
        for (const int b : of_child)
          out[at(a) * at(k) + at(b)] = out[at(b) * at(k) + at(a)] = depth[at(*v)];
      own.insert(own.end(), of_child.begin(), of_child.end());
    }
  }
  return out;
}

/// The triplets of the branches that are left, summed up by branch. Taking a branch out takes its
/// triplets off, so that a whole series costs no more than twice the first count.
class triplet_sums {
 public:
  explicit triplet_sums(const polytomy& of)
      : k_(of.size()), sums_(at(k_)), is_left_(at(k_), 1), left_(k_) {
    for (const resolution& one : of.resolutions) {
      depths_.push_back(depths_of_pairs(one.tree, k_));
      counts_.push_back(one.count);
      trees_ += one.count;
    }
    for (int b = 0; b < k_; ++b)
      for (int c = b + 1; c < k_; ++c) add(c, b, 1, c + 1);
  }

  void take_out(int branch) {
    is_left_[at(branch)] = 0;
    for (int b = 0; b < k_; ++b)
      if (is_left_[at(b)]) add(branch, b, -1, b + 1);
    --left_;
  }

  bool is_left(int branch) const { return is_left_[at(branch)] != 0; }
  /// Less than 0 where the first branch agrees less with the others than the second.
  std::strong_ordering compare(int a, int b) const { return sums_[at(a)] <=> sums_[at(b)]; }
  bool agrees(int branch) const { return sums_[at(branch)].agreed == triplets_of_each(); }
  branch_congruence congruence(int branch) const {
    const auto all = static_cast<double>(triplets_of_each());
    if (all == 0) return {};
    const sum& own = sums_[at(branch)];
    return {static_cast<double>(own.agreed) / all, static_cast<double>(own.most) / (all * trees_)};
  }

 private:
  struct sum {
    std::int64_t agreed = 0;  // triplets
    std::int64_t most = 0;    // trees with the most frequent state, over the triplets
    auto operator<=>(const sum&) const = default;
  };

  std::int64_t triplets_of_each() const {
    return static_cast<std::int64_t>(left_ - 1) * (left_ - 2) / 2;
  }

  /// The triplets of two branches with each that is left, from number `from` on.
  void add(int a, int b, int sign, int from) {
    check_interrupt();
    for (int c = from; c < k_; ++c) {
      if (!is_left_[at(c)]) continue;
      const sum triplet = state_of(a, b, c);
      for (const int one : {a, b, c}) {
        sums_[at(one)].agreed += sign * triplet.agreed;
        sums_[at(one)].most += sign * triplet.most;
      }
    }
  }

  sum state_of(int a, int b, int c) const {
    std::array<int, 4> seen{};  // unresolved; ab, ac, bc together
    for (std::size_t i = 0; i < depths_.size(); ++i) {
      const int ab = depth(i, a, b);
      const int ac = depth(i, a, c);
      const int bc = depth(i, b, c);
      const std::size_t which = ab > ac ? 1 : ac > ab ? 2 : bc > ab ? 3 : 0;
      seen[which] += counts_[i];
    }
    return {(seen[1] > 0) + (seen[2] > 0) + (seen[3] > 0) < 2, *std::ranges::max_element(seen)};
  }

  int depth(std::size_t i, int a, int b) const { return depths_[i][at(a) * at(k_) + at(b)]; }

  int k_;
  int trees_ = 0;
  std::vector<sum> sums_;  // by branch
  std::vector<std::uint8_t> is_left_;
  int left_;
  std::vector<std::vector<std::uint16_t>> depths_;  // by resolution
  std::vector<int> counts_;
};

/// Groups within a branch and the branch itself, at most.
int groups_within(const taxon_set& branch) { return branch.count() > 1 ? branch.count() - 1 : 0; }

/// The branch to go next; -1 where all agree.
int worst_branch(const polytomy& of, const triplet_sums& sums, int most_taxa) {
  int worst = -1;
  for (int b = 0; b < of.size(); ++b) {
    const int taxa = of.branches[at(b)].count();
    if (!sums.is_left(b) || taxa > most_taxa || sums.agrees(b)) continue;
    if (worst >= 0) {
      const auto order = sums.compare(b, worst);
      if (order > 0 || (order == 0 && taxa >= of.branches[at(worst)].count())) continue;
    }
    worst = b;
  }
  return worst;
}

}  // namespace

std::vector<branch_congruence> congruence_of(const polytomy& of) {
  const triplet_sums sums(of);
  std::vector<branch_congruence> out;
  for (int b = 0; b < of.size(); ++b) out.push_back(sums.congruence(b));
  return out;
}

pruning_series series_for(const polytomy& of, int most_taxa) {
  triplet_sums sums(of);
  std::vector<std::uint8_t> left_out(at(of.size()), 0);
  pruning_series series;
  std::size_t best = 0;
  int lost = 0;
  for (int left = of.size(); left > 3; --left) {
    const int worst = worst_branch(of, sums, most_taxa);
    if (worst < 0) break;
    const branch_congruence congruence = sums.congruence(worst);
    sums.take_out(worst);
    left_out[at(worst)] = 1;
    lost += groups_within(of.branches[at(worst)]);
    const int groups = common_groups_of(without_branches(of, left_out), of.size());
    series.steps.push_back({worst, congruence, groups});
    if (groups - lost > series.gain) {
      series.gain = groups - lost;
      best = series.steps.size();
    }
  }
  series.steps.resize(best);
  return series;
}

}  // namespace zeb
