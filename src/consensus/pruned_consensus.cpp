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
  const int ntax = selection.ntax;
  const int n = static_cast<int>(candidates.size());
  const std::vector<std::uint8_t> always = taxa_left_out(selection);
  const group_tree whole = method(selection);
  const auto total = static_cast<double>(number_of_sets(n, largest, 1'000'000'000));
  double done = 0;
  std::vector<pruned_set> found;
  gain_table gains;
  for (int size = 1; size <= std::min(largest, n) && !interrupted(); ++size) {
    std::vector<int> chosen(at(size));
    for (int i = 0; i < size; ++i) chosen[at(i)] = i;
    do {
      check_interrupt();
      if (time_is_out()) stop_search(stop_reason::time);
      if (interrupted()) break;
      show_progress("Pruning taxa", done++, total);
      pruned_set set{.taxa = taxon_set(ntax)};
      std::vector<std::uint8_t> cut(at(ntax), 0);
      for (const int i : chosen) {
        set.taxa.insert(candidates[at(i)]);
        cut[at(candidates[at(i)])] = 1;
      }
      group_tree reduced = whole;
      delete_taxa(reduced.tree, ntax, cut);
      selection.excluded = always;
      for (int t = 0; t < ntax; ++t) selection.excluded[at(t)] |= cut[at(t)];
      set.gain = groups_of(method(selection), ntax) - groups_of(reduced, ntax);
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

}  // namespace zeb
