#include "supports/resampling/group_supports.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "consensus/conflict_consensus.h"
#include "consensus/majority_consensus.h"
#include "console/progress.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

tree_selection selection_of(const replicates& sampled) {
  tree_selection selection;
  selection.ntax = matrix.ntax;
  for (const replicate& one : sampled.done) selection.trees.emplace_back(one.tree);
  selection.low_memory = consensus.low_memory_always;
  return selection;
}

/// The node of all taxa but the outgroup; -1 where the tree has none.
int rest_of_root(const_tree_span tree) {
  const int ntax = matrix.ntax;
  if (is_absent(tree, matrix.outgroup) || tree[at(matrix.outgroup)] != ntax) return -1;
  int rest = -1;
  for (int n = 0; n < node_limit(tree, ntax); ++n) {
    if (n == ntax || n == matrix.outgroup || tree[at(n)] != ntax) continue;
    if (n < ntax && is_absent(tree, n)) continue;
    if (rest >= 0) return -1;
    rest = n;
  }
  return rest;
}

/// A tree whose nodes from after the root on are groups, without supports yet.
supported_tree without_supports(std::vector<tree_node> tree, double most) {
  supported_tree out;
  const std::size_t nodes = at(node_limit(tree, matrix.ntax));
  out.values.assign(nodes, most);
  out.is_group.assign(nodes, 0);
  std::fill(out.is_group.begin() + matrix.ntax + 1, out.is_group.end(), std::uint8_t{1});
  if (const int rest = rest_of_root(tree); rest >= 0) out.is_group[at(rest)] = 0;
  out.texts.resize(nodes);
  out.labels.resize(tree.size());
  out.tree = std::move(tree);
  return out;
}

/// Whole per cents on the diagram, negative ones in brackets; rounded ones for tree files.
supported_tree in_per_cent(std::vector<tree_node> tree, const std::vector<int>& counts,
                           int n_trees) {
  supported_tree out = without_supports(std::move(tree), 100);
  for (std::size_t n = 0; n < out.values.size(); ++n) {
    if (!out.is_group[n]) continue;
    out.values[n] = counts[n] * 100.0 / n_trees;
    const int whole = static_cast<int>(counts[n] * 100LL / n_trees);
    out.texts[n] = counts[n] < 0 ? text_of("[%i]", std::abs(whole)) : std::to_string(whole);
    out.labels[n].label = std::to_string(std::lround(out.values[n]));
  }
  return out;
}

int count_of(const replicates& sampled) { return static_cast<int>(sampled.done.size()); }

/// Straight line through points whose second coordinate is 0 or 1.
struct regression {
  double sum_x = 0, sum_xx = 0;
  int points = 0;
  void add(double x) {
    sum_x += x;
    sum_xx += x * x;
    ++points;
  }
  double spread() const { return sum_xx - sum_x * sum_x / points; }
  /// Of a group that was found in `found` points whose first coordinates sum up to `x`.
  double slope(double x, int found) const { return (x - sum_x * found / points) / spread(); }
};

struct group_sums {
  double x = 0;
  int found = 0;
};

void check_partitions(const replicates& sampled) {
  const auto characters = [](const replicate& one) { return one.kept + one.changed; };
  const int first = characters(sampled.done.front());
  if (first == 0 || std::any_of(sampled.done.begin(), sampled.done.end(),
                                [&](const replicate& one) { return characters(one) != first; }))
    error_end("All trees must have the same partitions changed/unchanged chars.");
}

double share_changed(const replicate& one) {
  return static_cast<double>(one.changed) / (one.kept + one.changed);
}

/// By node of the reference: of the replicates that have its group.
std::vector<group_sums> sums_of_groups(const replicates& sampled, const_tree_span reference) {
  const arena_scope scope;
  group_tally tally(matrix.ntax, {});
  const std::vector<std::uint8_t> not_counted(reference.size() + 1, 0);
  if (!tally.count_tree_groups(reference, not_counted, true)) out_of_memory();
  const std::vector<int> records = tally.records_of_last_tree();
  std::vector<group_sums> of_record(tally.groups().size());
  for (int i = 0; i < count_of(sampled); ++i) {
    show_progress("Calculating slopes", i, count_of(sampled));
    const replicate& one = sampled.done[at(i)];
    if (!tally.count_tree_groups(one.tree, {}, false)) out_of_memory();
    for (const int number : tally.records_of_last_tree()) {
      if (number < 0) continue;
      of_record[at(number)].x += share_changed(one);
      ++of_record[at(number)].found;
    }
  }
  clear_progress();
  std::vector<group_sums> sums(reference.size());
  for (std::size_t n = 0; n < sums.size(); ++n)
    if (records[n] >= 0) sums[n] = of_record[at(records[n])];
  return sums;
}

}  // namespace

std::vector<tree_node> tree_like_replicates(int number, const std::vector<std::uint8_t>& left_out) {
  const const_tree_span stored = stored_tree(number);
  std::vector<tree_node> tree(stored.begin(), stored.end());
  reroot_tree(tree, matrix.ntax, matrix.outgroup);
  delete_taxa(tree, matrix.ntax, left_out);
  return tree;
}

supported_tree frequency_supports(const replicates& sampled,
                                  const std::vector<tree_node>& reference, int cut) {
  const tree_selection selection = selection_of(sampled);
  if (!reference.empty())
    return in_per_cent(reference, group_frequencies(selection, reference), count_of(sampled));
  group_tree found = majority_consensus(selection, cut);
  return in_per_cent(std::move(found.tree), found.values, count_of(sampled));
}

supported_tree difference_supports(const replicates& sampled,
                                   const std::vector<tree_node>& reference, int cut) {
  const tree_selection selection = selection_of(sampled);
  if (!reference.empty())
    return in_per_cent(reference, group_differences(selection, reference), count_of(sampled));
  group_tree found = difference_consensus(selection, cut);
  return in_per_cent(std::move(found.tree), found.values, count_of(sampled));
}

supported_tree slope_supports(const replicates& sampled, const std::vector<tree_node>& reference) {
  check_partitions(sampled);
  regression line;
  for (const replicate& one : sampled.done) line.add(share_changed(one));
  const std::vector<group_sums> sums = sums_of_groups(sampled, reference);
  supported_tree out = without_supports(reference, 0);
  out.frequencies.assign(out.values.size(), 1);
  for (std::size_t n = 0; n < out.values.size(); ++n) {
    if (!out.is_group[n]) continue;
    // All replicates alike in their characters have no line through them.
    const bool is_level = line.spread() < 1e-12;
    out.values[n] = is_level ? 0 : line.slope(sums[n].x, sums[n].found);
    out.frequencies[n] = static_cast<double>(sums[n].found) / count_of(sampled);
    out.texts[n] = text_of(" %+.2f", out.values[n]);
    if (sums[n].found < count_of(sampled)) out.texts[n] += text_of("/%.2f", out.frequencies[n]);
    out.labels[n].label = text_of("%.2f", out.values[n]);
  }
  return out;
}

double mean_support(const supported_tree& supports) {
  double sum = 0;
  int groups = 0;
  for (std::size_t n = 0; n < supports.values.size(); ++n) {
    if (!supports.is_group[n]) continue;
    sum += supports.values[n];
    ++groups;
  }
  return groups > 0 ? sum / groups : 0;
}

}  // namespace zeb
