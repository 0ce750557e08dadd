#include "trees/drawing/shrunken_tree.h"

#include <algorithm>

#include "base/indices.h"
#include "matrix/matrix.h"
#include "trees/tree_walks.h"

namespace zeb {

shrinking_state shrinking;

namespace {

/// A group that is a clade of the tree.
struct clade_group {
  int group = 0;
  int node = 0;  // the clade
  int first = 0;
  int taxa = 0;
};

bool in_group(int taxon, int group) {
  return ((matrix.taxon_groups[at(taxon)] >> group) & 1U) != 0;
}

/// Terminals below each node that satisfy a predicate.
template <class predicate>
std::vector<int> count_below(const_tree_span tree, predicate wanted) {
  std::vector<int> count(at(node_limit(tree, matrix.ntax)), 0);
  for (int t = 0; t < matrix.ntax; ++t) {
    count[at(t)] = !is_absent(tree, t) && wanted(t) ? 1 : 0;
    if (count[at(t)]) count[at(tree[at(t)])] += 1;
  }
  // Ancestors last: the order of the nodes turned around.
  const std::vector<int> order =
      internal_nodes_root_first(descendants_of(tree, matrix.ntax), matrix.ntax);
  for (std::size_t i = order.size(); i-- > 1;) count[at(tree[at(order[i])])] += count[at(order[i])];
  return count;
}

std::vector<clade_group> groups_that_are_clades(const_tree_span tree) {
  std::vector<clade_group> found;
  const std::vector<int> all = count_below(tree, [](int) { return true; });
  for (int g = 0; g < matrix_state::group_count; ++g) {
    if (((shrinking.groups >> g) & 1U) == 0) continue;
    const std::vector<int> members = count_below(tree, [g](int t) { return in_group(t, g); });
    const int taxa = members[at(matrix.ntax)];
    if (taxa < 2) continue;
    int first = 0;
    while (members[at(first)] == 0) ++first;
    int node = first;
    while (members[at(node)] < taxa) node = tree[at(node)];
    if (node != matrix.ntax && all[at(node)] == taxa) found.push_back({g, node, first, taxa});
  }
  std::ranges::stable_sort(
      found, [](const clade_group& a, const clade_group& b) { return a.taxa > b.taxa; });
  return found;
}

}  // namespace

void show_groups_as_terminals(std::uint32_t groups) { shrinking.groups = groups; }
void show_trees_in_full() { shrinking.groups = 0; }

shrunken_tree shrink_tree(const_tree_span tree, std::vector<std::string> labels,
                          std::span<const std::string> node_texts) {
  shrunken_tree result{
      {tree.begin(), tree.end()}, std::move(labels), {node_texts.begin(), node_texts.end()}};
  result.node_texts.resize(node_texts.empty() ? 0 : tree.size());
  for (const clade_group& clade : groups_that_are_clades(tree)) {
    if (is_absent(result.record, clade.first)) continue;  // within a larger group
    result.labels[at(clade.first)] =
        matrix.taxon_group_names[at(clade.group)] + " (" + std::to_string(clade.taxa) + ")";
    if (!node_texts.empty()) result.node_texts[at(clade.first)] = node_texts[at(clade.node)];
    std::vector<std::uint8_t> members(at(matrix.ntax), 0);
    flag_terminals(tree, matrix.ntax, clade.node, members);
    for (int t = clade.first + 1; t < matrix.ntax; ++t) {
      if (members[at(t)]) result.record[at(t)] = 0;
    }
  }
  std::vector<int> numbers;
  const std::vector<std::string> texts = result.node_texts;
  remove_redundant_nodes(result.record, matrix.ntax, &numbers);
  for (std::size_t v = at(matrix.ntax); v < numbers.size() && !texts.empty(); ++v) {
    if (numbers[v] >= 0) result.node_texts[at(numbers[v])] = texts[v];
  }
  return result;
}

}  // namespace zeb
