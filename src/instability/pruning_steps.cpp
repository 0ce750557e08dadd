#include "instability/pruning_steps.h"

#include <algorithm>
#include <numeric>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/time_limit.h"
#include "consensus/majority_consensus.h"
#include "console/progress.h"

namespace zeb {
namespace {

constexpr std::int64_t most_sets = 10'000'000;  // tried by one step
constexpr int fewest_left = 3;                  // taxa: with fewer there is no group to gain

/// Sum of the frequencies of the groups of a majority, in trees.
std::int64_t majority_sum(const tree_selection& selection) {
  const std::vector<int> values = majority_consensus(selection, 50).values;
  return std::accumulate(values.begin(), values.end(), std::int64_t{0},
                         [](std::int64_t sum, int value) { return sum + std::max(value, 0); });
}

void leave_out(tree_selection& selection, const taxon_set& taxa) {
  selection.excluded.resize(at(selection.ntax), 0);
  for (const int t : taxa) selection.excluded[at(t)] = 1;
}

/// The taxon without which the groups of a majority are most frequent, the first of several; empty
/// where the user stops it.
taxon_set least_settled(const tree_selection& selection, const std::vector<int>& candidates) {
  taxon_set best(selection.ntax);
  std::int64_t highest = -1;
  double done = 0;
  for (const int taxon : candidates) {
    show_progress("Taxa of most places", done++, static_cast<double>(candidates.size()));
    check_interrupt();
    if (time_is_out()) stop_search(stop_reason::time);
    if (interrupted()) return taxon_set(selection.ntax);
    const taxon_set one(selection.ntax, {taxon});
    tree_selection rest = selection;
    leave_out(rest, one);
    const std::int64_t sum = majority_sum(rest);
    if (sum > highest) {
      highest = sum;
      best = one;
    }
  }
  clear_progress();
  return best;
}

/// Is there a group for every node that a tree of the taxa can have?
bool is_resolved(const tree_selection& selection, int groups) {
  return groups >= taxa_in_play(selection) - 2;
}

}  // namespace

int taxa_in_play(const tree_selection& selection) {
  return static_cast<int>(std::ranges::count(taxa_left_out(selection), 0));
}

std::vector<pruned_set> sets_by_net_gain(const tree_selection& selection, consensus_method method,
                                         const std::vector<int>& candidates, int largest) {
  const int size = std::min(largest, taxa_in_play(selection) - fewest_left);
  if (size < 1) return {};
  if (number_of_sets(static_cast<int>(candidates.size()), size, most_sets) == most_sets)
    error_end("Too many sets of", size, "of", candidates.size(),
              "taxa: give fewer taxa after \"/\"");
  std::vector<pruned_set> sets = sets_worth_pruning(selection, method, candidates, size);
  std::ranges::stable_sort(sets, [](const pruned_set& a, const pruned_set& b) {
    return a.net() != b.net() ? a.net() > b.net() : a.taxa.count() < b.taxa.count();
  });
  return sets;
}

std::vector<pruning_step> steps_of_pruning(tree_selection selection, consensus_method method,
                                           std::vector<int> candidates, int largest, int look) {
  std::vector<pruning_step> steps;
  std::size_t kept = 0;  // steps that led to more groups than there were
  int groups = groups_of(method(selection), selection.ntax);
  int most_groups = groups;
  while (!interrupted()) {
    const std::vector<pruned_set> sets = sets_by_net_gain(selection, method, candidates, largest);
    if (interrupted()) break;
    pruning_step next{taxon_set(selection.ntax), 0, 0, 0};
    if (!sets.empty() && sets[0].net() > 0)
      next.taxa = sets[0].taxa;
    else if (static_cast<int>(steps.size() - kept) < look && !is_resolved(selection, groups) &&
             taxa_in_play(selection) > fewest_left)
      next.taxa = least_settled(selection, candidates);
    if (next.taxa.empty()) break;
    std::vector<int> chosen;
    for (std::size_t i = 0; i < candidates.size(); ++i)
      if (next.taxa.contains(candidates[i])) chosen.push_back(static_cast<int>(i));
    const pruned_set effect = effect_of_pruning(selection, method, candidates, chosen);
    next.gained = effect.gain;
    next.lost = effect.lost;
    groups += effect.net();
    next.groups = groups;
    leave_out(selection, next.taxa);
    std::erase_if(candidates, [&](int t) { return next.taxa.contains(t); });
    steps.push_back(std::move(next));
    if (groups > most_groups) {
      most_groups = groups;
      kept = steps.size();
    }
  }
  steps.resize(kept);
  return steps;
}

}  // namespace zeb
