#include "consensus/pruned_consensus.h"

#include <algorithm>
#include <unordered_map>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/time_limit.h"
#include "console/progress.h"

namespace zeb {
namespace {

/// Moves to the next choice of numbers below `n`, in lexical order. False after the last one.
bool next_choice(std::vector<int>& chosen, int n) {
  const int size = static_cast<int>(chosen.size());
  for (int i = size - 1; i >= 0; --i) {
    if (chosen[at(i)] == n - size + i) continue;
    ++chosen[at(i)];
    for (int j = i + 1; j < size; ++j) chosen[at(j)] = chosen[at(j - 1)] + 1;
    return true;
  }
  return false;
}

/// Gains of sets by what they hold; only those above 0, each at least that of the sets within.
using gain_table = std::unordered_map<taxon_set, int>;

/// The best gain of the sets with one taxon less.
int gain_within(const gain_table& gains, const taxon_set& taxa) {
  int best = 0;
  for (const int left_out : taxa) {
    taxon_set smaller = taxa;
    smaller.erase(left_out);
    const auto found = gains.find(smaller);
    if (found != gains.end()) best = std::max(best, found->second);
  }
  return best;
}

/// The consensus of the whole trees, and what it is without some taxa.
class pruning {
 public:
  pruning(tree_selection selection, consensus_method method, double total)
      : selection_(std::move(selection)),
        method_(method),
        always_(taxa_left_out(selection_)),
        whole_(method(selection_)),
        total_(total) {}

  /// Tells how far it is; true when the user or the time limit ends it.
  bool must_stop() {
    check_interrupt();
    if (time_is_out()) stop_search(stop_reason::time);
    if (!interrupted()) show_progress("Pruning taxa", done_++, total_);
    return interrupted();
  }

  /// `chosen`: indices of candidates.
  pruned_set without(std::span<const int> candidates, const std::vector<int>& chosen) {
    const int ntax = selection_.ntax;
    pruned_set set{.taxa = taxon_set(ntax)};
    std::vector<std::uint8_t> cut(at(ntax), 0);
    selection_.excluded = always_;
    for (const int i : chosen) {
      const int taxon = candidates[at(i)];
      set.taxa.insert(taxon);
      cut[at(taxon)] = selection_.excluded[at(taxon)] = 1;
    }
    group_tree reduced = whole_;
    delete_taxa(reduced.tree, ntax, cut);
    set.gain = groups_of(method_(selection_), ntax) - groups_of(reduced, ntax);
    set.lost = groups_of(whole_, ntax) - groups_of(reduced, ntax);
    return set;
  }

 private:
  tree_selection selection_;
  consensus_method method_;
  std::vector<std::uint8_t> always_;  // taxa left out anyway
  group_tree whole_;
  double total_;
  double done_ = 0;
};

}  // namespace

int groups_of(const group_tree& result, int ntax) {
  return node_limit(result.tree, ntax) - ntax - 1;
}

std::int64_t number_of_sets(int candidates, int largest, std::int64_t limit) {
  std::int64_t sum = 0;
  std::int64_t of_size = 1;
  for (int size = 1; size <= largest && size <= candidates; ++size) {
    // Exact: a product of `size` numbers in a row divides by the factorial of `size`.
    of_size = of_size * (candidates - size + 1) / size;
    sum += of_size;
    if (sum >= limit) return limit;
  }
  return sum;
}

std::vector<pruned_set> sets_worth_pruning(tree_selection selection, consensus_method method,
                                           std::span<const int> candidates, int largest) {
  const int n = static_cast<int>(candidates.size());
  pruning pruned(std::move(selection), method,
                 static_cast<double>(number_of_sets(n, largest, 1'000'000'000)));
  std::vector<pruned_set> found;
  gain_table gains;
  for (int size = 1; size <= std::min(largest, n) && !interrupted(); ++size) {
    std::vector<int> chosen(at(size));
    for (int i = 0; i < size; ++i) chosen[at(i)] = i;
    do {
      if (pruned.must_stop()) break;
      pruned_set set = pruned.without(candidates, chosen);
      const int within = gain_within(gains, set.taxa);
      if (std::max(set.gain, within) > 0) gains[set.taxa] = std::max(set.gain, within);
      if (set.gain > within) found.push_back(std::move(set));
    } while (next_choice(chosen, n));
  }
  clear_progress();
  std::ranges::stable_sort(found, [](const pruned_set& a, const pruned_set& b) {
    return a.gain != b.gain ? a.gain > b.gain : a.taxa.count() < b.taxa.count();
  });
  return found;
}

pruned_set effect_of_pruning(const tree_selection& selection, consensus_method method,
                             std::span<const int> candidates, const std::vector<int>& chosen) {
  return pruning(selection, method, 1).without(candidates, chosen);
}

std::vector<pruned_set> gains_of_single_taxa(tree_selection selection, consensus_method method,
                                             std::span<const int> candidates) {
  const int n = static_cast<int>(candidates.size());
  pruning pruned(std::move(selection), method, n);
  std::vector<pruned_set> found;
  for (int i = 0; i < n && !pruned.must_stop(); ++i)
    found.push_back(pruned.without(candidates, {i}));
  clear_progress();
  return found;
}

}  // namespace zeb
