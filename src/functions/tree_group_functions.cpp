// Groups of trees: which tree has them, how often, and how unlike two trees are.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <set>
#include <vector>

#include "consensus/conflict_consensus.h"
#include "consensus/requests.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "functions/tree_arguments.h"
#include "language/lexer.h"
#include "macro/assignment.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

// Taxa as bits, 64 in a word.
using taxon_set = std::vector<std::uint64_t>;

taxon_set no_taxa() { return taxon_set((static_cast<std::size_t>(matrix.ntax) + 63) / 64, 0); }
void add_taxon(taxon_set& set, int taxon) {
  set[static_cast<std::size_t>(taxon) / 64] |= std::uint64_t{1} << (taxon % 64);
}
int size_of(const taxon_set& set) {
  int size = 0;
  for (const std::uint64_t word : set) size += std::popcount(word);
  return size;
}
taxon_set shared_by(const taxon_set& a, const taxon_set& b) {
  taxon_set both = a;
  for (std::size_t i = 0; i < both.size(); ++i) both[i] &= b[i];
  return both;
}

// The taxa below each node of a tree, from 0 to its last node.
std::vector<taxon_set> sets_of(const_tree_span tree) {
  std::vector<taxon_set> sets(static_cast<std::size_t>(node_limit(tree, matrix.ntax)), no_taxa());
  for (int t = 0; t < matrix.ntax; ++t)
    if (!is_absent(tree, t)) add_taxon(sets[static_cast<std::size_t>(t)], t);
  const descendant_lists lists = descendants_of(tree, matrix.ntax);
  const std::vector<int> order = nodes_rootward_first(lists, matrix.ntax);
  for (auto node = order.rbegin(); node != order.rend(); ++node) {
    taxon_set& set = sets[static_cast<std::size_t>(*node)];
    for (const int d : lists.children(*node)) {
      const taxon_set& below = sets[static_cast<std::size_t>(d)];
      for (std::size_t i = 0; i < set.size(); ++i) set[i] |= below[i];
    }
  }
  return sets;
}
const taxon_set& root_set(const std::vector<taxon_set>& sets) {
  return sets[static_cast<std::size_t>(matrix.ntax)];
}

// What two groups are to each other.
enum relation { incompatible, first_includes, second_includes, equal, disjunct };

relation relate(const taxon_set& a, const taxon_set& b) {
  const int both = size_of(shared_by(a, b));
  const bool more_in_a = size_of(a) > both;
  const bool more_in_b = size_of(b) > both;
  if (!more_in_a && !more_in_b) return equal;
  if (!more_in_b) return first_includes;
  if (!more_in_a) return second_includes;
  return both ? incompatible : disjunct;
}

double compare_two_groups() {
  open_brackets();
  const tree_and_node first = tree_then_node();
  const tree_and_node second = tree_then_node();
  close_brackets();
  return relate(sets_of(first.tree)[static_cast<std::size_t>(first.node)],
                sets_of(second.tree)[static_cast<std::size_t>(second.node)]);
}

// Node of a tree with the group, by the taxa that both trees have, and the smallest such; 0 none
// but compatible, -1 contradicted.
int matching_node(const taxon_set& group, const std::vector<taxon_set>& other,
                  const taxon_set& shared) {
  const taxon_set wanted = shared_by(group, shared);
  if (size_of(wanted) < 2) return 0;
  int answer = 0;
  for (int node = matrix.ntax; node < static_cast<int>(other.size()); ++node) {
    const taxon_set& whole = other[static_cast<std::size_t>(node)];
    const relation r = relate(wanted, shared_by(whole, shared));
    const bool smaller =
        answer <= 0 || size_of(whole) < size_of(other[static_cast<std::size_t>(answer)]);
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
  return matching_node(a[static_cast<std::size_t>(t.node)], b, shared_by(root_set(a), root_set(b)));
}

double group_to_group() {
  const auto [first, second] = two_trees();
  const std::vector<taxon_set> a = sets_of(first);
  const std::vector<taxon_set> b = sets_of(second);
  const taxon_set shared = shared_by(root_set(a), root_set(b));
  std::vector<int> nodes;
  for (int t = 0; t < matrix.ntax; ++t)
    nodes.push_back(is_absent(first, t) || is_absent(second, t) ? 0 : t);
  for (std::size_t node = nodes.size(); node < a.size(); ++node)
    nodes.push_back(matching_node(a[node], b, shared));
  return write_nodes("Grptogrp", nodes);
}

// Groups of two or more of the shared taxa, but not all of them.
std::set<taxon_set> groups_among(const std::vector<taxon_set>& sets, const taxon_set& shared) {
  std::set<taxon_set> groups;
  for (std::size_t node = static_cast<std::size_t>(matrix.ntax) + 1; node < sets.size(); ++node) {
    taxon_set group = shared_by(sets[node], shared);
    if (size_of(group) > 1 && group != shared) groups.insert(std::move(group));
  }
  return groups;
}

// Groups in only one of the trees (Robinson and Foulds 1981, rooted), and how many groups both have
// in all.
struct group_difference {
  double unshared = 0;
  double all = 0;
};

group_difference compare_trees() {
  const auto [first, second] = two_trees();
  const std::vector<taxon_set> sets_a = sets_of(first);
  const std::vector<taxon_set> sets_b = sets_of(second);
  const taxon_set shared = shared_by(root_set(sets_a), root_set(sets_b));
  const auto a = groups_among(sets_a, shared);
  const auto b = groups_among(sets_b, shared);
  group_difference result;
  result.all = static_cast<double>(a.size() + b.size());
  for (const auto& group : a) result.unshared += !b.contains(group);
  for (const auto& group : b) result.unshared += !a.contains(group);
  return result;
}

double group_distance() { return compare_trees().unshared; }

double robinson_foulds() {
  const group_difference d = compare_trees();
  return d.all > 0 ? d.unshared / d.all : 0;
}

double monophyletic() {
  open_brackets();
  const const_tree_span tree = stored_tree(tree_argument());
  taxon_set group = no_taxa();
  while (skip_blanks_peek() != ']') add_taxon(group, taxon_argument());
  close_brackets();
  if (size_of(group) < 2) return 1;
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
  const taxon_set group = sets_of(t.tree)[static_cast<std::size_t>(t.node)];
  const std::vector<taxon_set> sets = sets_of(other);
  int best = 0;
  double highest = 0;
  for (int node = matrix.ntax; node < static_cast<int>(sets.size()); ++node) {
    const taxon_set& set = sets[static_cast<std::size_t>(node)];
    const int both = size_of(shared_by(group, set));
    const double similarity = both / static_cast<double>(size_of(group) + size_of(set) - both);
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
  const std::vector<std::uint8_t> all(static_cast<std::size_t>(store.ntrees), 1);
  const std::vector<int> counts = group_frequencies(select_stored_trees(all), t.tree);
  const int count = counts[static_cast<std::size_t>(t.node)];
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
    {"rfdist", "[T1 T2]", "normalised Robinson-Foulds distance of the trees", robinson_foulds},
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
