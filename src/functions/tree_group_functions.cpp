// Groups of trees: which tree has them, how often, and how unlike two trees are.
#include <algorithm>
#include <unordered_set>
#include <vector>

#include "base/indices.h"
#include "base/taxon_set.h"
#include "consensus/conflict_consensus.h"
#include "consensus/requests.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "functions/tree_arguments.h"
#include "language/lexer.h"
#include "macro/assignment.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

// The taxa below each node of a tree, from 0 to its last node.
std::vector<taxon_set> sets_of(const_tree_span tree) {
  std::vector<taxon_set> sets(at(node_limit(tree, matrix.ntax)), taxon_set(matrix.ntax));
  for (int t = 0; t < matrix.ntax; ++t)
    if (!is_absent(tree, t)) sets[at(t)].insert(t);
  const descendant_lists lists = descendants_of(tree, matrix.ntax);
  const std::vector<int> order = internal_nodes_root_first(lists, matrix.ntax);
  for (auto node = order.rbegin(); node != order.rend(); ++node)
    for (const int d : lists.children(*node)) sets[at(*node)] |= sets[at(d)];
  return sets;
}
const taxon_set& root_set(const std::vector<taxon_set>& sets) { return sets[at(matrix.ntax)]; }

// What two groups are to each other.
enum relation { incompatible, first_includes, second_includes, equal, disjunct };

relation relate(const taxon_set& a, const taxon_set& b) {
  if (a == b) return equal;
  if (b.is_subset_of(a)) return first_includes;
  if (a.is_subset_of(b)) return second_includes;
  return a.meets(b) ? incompatible : disjunct;
}

double compare_two_groups() {
  open_brackets();
  const tree_and_node first = tree_then_node();
  const tree_and_node second = tree_then_node();
  close_brackets();
  return relate(sets_of(first.tree)[at(first.node)], sets_of(second.tree)[at(second.node)]);
}

// Node of a tree with the group, by the taxa that both trees have, and the smallest such; 0 none
// but compatible, -1 contradicted.
int matching_node(const taxon_set& group, const std::vector<taxon_set>& other,
                  const taxon_set& shared) {
  const taxon_set wanted = group & shared;
  if (wanted.count() < 2) return 0;
  int answer = 0;
  for (int node = matrix.ntax; node < static_cast<int>(other.size()); ++node) {
    const taxon_set& whole = other[at(node)];
    const relation r = relate(wanted, whole & shared);
    const bool smaller = answer <= 0 || whole.count() < other[at(answer)].count();
    if (r == equal && smaller) answer = node;
    if (r == incompatible) answer = -1;
  }
  return answer;
}

double equal_group() {
  open_brackets();
  const tree_and_node t = tree_then_node();
  const const_tree_span other = stored_tree(tree_argument());
  close_brackets();
  if (t.node < matrix.ntax) return is_absent(other, t.node) ? 0 : t.node;
  const std::vector<taxon_set> a = sets_of(t.tree);
  const std::vector<taxon_set> b = sets_of(other);
  return matching_node(a[at(t.node)], b, root_set(a) & root_set(b));
}

double group_to_group() {
  const auto [first, second] = two_trees();
  const std::vector<taxon_set> a = sets_of(first);
  const std::vector<taxon_set> b = sets_of(second);
  const taxon_set shared = root_set(a) & root_set(b);
  std::vector<int> nodes;
  for (int t = 0; t < matrix.ntax; ++t)
    nodes.push_back(is_absent(first, t) || is_absent(second, t) ? 0 : t);
  for (std::size_t node = nodes.size(); node < a.size(); ++node)
    nodes.push_back(matching_node(a[node], b, shared));
  return write_nodes("Grptogrp", nodes);
}

// Groups of two or more of the shared taxa, but not all of them.
std::unordered_set<taxon_set> groups_among(const std::vector<taxon_set>& sets,
                                           const taxon_set& shared) {
  std::unordered_set<taxon_set> groups;
  for (std::size_t node = at(matrix.ntax) + 1; node < sets.size(); ++node) {
    taxon_set group = sets[node] & shared;
    if (group.count() > 1 && group != shared) groups.insert(std::move(group));
  }
  return groups;
}

// Groups in only one of the trees.
double group_distance() {
  const auto [first, second] = two_trees();
  const std::vector<taxon_set> sets_a = sets_of(first);
  const std::vector<taxon_set> sets_b = sets_of(second);
  const taxon_set shared = root_set(sets_a) & root_set(sets_b);
  const auto a = groups_among(sets_a, shared);
  const auto b = groups_among(sets_b, shared);
  double unshared = 0;
  for (const auto& group : a) unshared += !b.contains(group);
  for (const auto& group : b) unshared += !a.contains(group);
  return unshared;
}

double monophyletic() {
  open_brackets();
  const const_tree_span tree = stored_tree(tree_argument());
  taxon_set group(matrix.ntax);
  while (skip_blanks_peek() != ']') group.insert(taxon_argument());
  close_brackets();
  if (group.count() < 2) return 1;
  const std::vector<taxon_set> sets = sets_of(tree);
  return std::find(sets.begin(), sets.end(), group) != sets.end();
}

// The node whose group shares most taxa, of those in either (Jaccard 1901); the first of several.
// Terminals count for groups of one taxon only.
double most_similar_node() {
  open_brackets();
  const tree_and_node t = tree_then_node();
  const const_tree_span other = stored_tree(tree_argument());
  close_brackets();
  if (t.node < matrix.ntax) return is_absent(other, t.node) ? 0 : t.node;
  const taxon_set group = sets_of(t.tree)[at(t.node)];
  const std::vector<taxon_set> sets = sets_of(other);
  int best = 0;
  double highest = 0;
  for (int node = matrix.ntax; node < static_cast<int>(sets.size()); ++node) {
    const taxon_set& set = sets[at(node)];
    const int both = (group & set).count();
    const double similarity = both / static_cast<double>(group.count() + set.count() - both);
    if (similarity <= highest) continue;
    highest = similarity;
    best = node;
  }
  return best;
}

// ---- frequencies ----

// Per cent of the trees in memory with the group. Terminals and the root are in all trees.
double group_frequency() {
  const tree_and_node t = bracketed_tree_and_node();
  const std::vector<std::uint8_t> all(at(store.ntrees), 1);
  const std::vector<int> counts = group_frequencies(select_stored_trees(all), t.tree);
  const int count = counts[at(t.node)];
  return count < 0 ? 100 : 100.0 * count / store.ntrees;
}

double frequency_list() { return write_list("Freqlist", requested_frequencies(false)); }
double difference_list() { return write_list("Freqdlist", requested_frequencies(true)); }

// clang-format off
constexpr expression_function rows[] = {
    {"gcomp", "[T1 N1 T2 N2]", "0 the groups are incompatible, 1 N1 includes N2, 2 N2 includes N1, 3 they are equal, 4 disjunct", compare_two_groups},
    {"eqgroup", "[T1 N1 T2]", "node of T2 with the group of node N1 of T1; 0 none but compatible, -1 none and contradictory", equal_group},
    {"grptogrp", "[T1 T2]", "for each node of T1 the node of T2 with the same group", group_to_group},
    {"grpdist", "[T1 T2]", "distance of trees by groups not shared", group_distance},
    {"ismono", "[T taxa]", "1 if the taxa, separated by blanks, form a group of tree T", monophyletic},
    {"simgroup", "[T1 N T2]", "node of T2 whose group is most similar to that of node N of T1: the largest share of taxa in both groups, of those in either; 0 if none shares a taxon", most_similar_node},
    {"gfreq", "[T N]", "per cent of the trees in memory that have the group of node N of tree T", group_frequency},
    {"freqlist", " <options>", "list of frequencies of groups in per cent, options as for majority up to \";\": by node of tree J (\"[J]\"), or else of the majority rule tree; 100 where a node has no group", frequency_list},
    {"freqdlist", " <options>", "list of frequency differences of groups in per cent, options as for freqdifs; by node as freqlist", difference_list, function_list::general, "freqlist"},
};
// clang-format on

}  // namespace

const std::span<const expression_function> tree_group_functions = rows;

}  // namespace zeb
