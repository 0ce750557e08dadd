// Groups of trees: which tree has them, how often, and how unlike two trees are.
#include <algorithm>
#include <set>
#include <vector>

#include "consensus/consensus.h"
#include "consensus/requests.h"
#include "functions/arguments.h"
#include "functions/function_table.h"
#include "functions/tree_arguments.h"
#include "matrix/matrix.h"
#include "shell/errors.h"
#include "shell/lexer.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

bool includes(const std::vector<int>& large, const std::vector<int>& small) {
  return std::includes(large.begin(), large.end(), small.begin(), small.end());
}

bool overlap(const std::vector<int>& a, const std::vector<int>& b) {
  std::vector<int> shared;
  std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(shared));
  return !shared.empty();
}

double compare_two_groups() {
  open_brackets();
  const tree_and_node first = tree_then_node();
  const tree_and_node second = tree_then_node();
  close_brackets();
  const std::vector<int> a = terminals_of(first.tree, first.node);
  const std::vector<int> b = terminals_of(second.tree, second.node);
  if (a == b) return 3;
  if (includes(a, b)) return 1;
  if (includes(b, a)) return 2;
  return overlap(a, b) ? 0 : 4;
}

// Node of the tree with the group; 0 none but compatible, -1 contradicted.
int matching_node(const std::vector<int>& group, const_tree_span tree) {
  int answer = 0;
  for (int node = matrix.ntax; node < node_limit(tree, matrix.ntax); ++node) {
    const std::vector<int> other = terminals_of(tree, node);
    if (other == group) return node;
    if (!includes(group, other) && !includes(other, group) && overlap(group, other)) answer = -1;
  }
  return answer;
}

double equal_group() {
  open_brackets();
  const tree_and_node t = tree_then_node();
  const const_tree_span other = stored_tree(tree_argument());
  close_brackets();
  if (t.node < matrix.ntax) return is_absent(other, t.node) ? 0 : t.node;
  return matching_node(terminals_of(t.tree, t.node), other);
}

double group_to_group() {
  open_brackets();
  const const_tree_span a = stored_tree(tree_argument());
  const const_tree_span b = stored_tree(tree_argument());
  close_brackets();
  std::vector<int> nodes;
  for (int t = 0; t < matrix.ntax; ++t) nodes.push_back(is_absent(b, t) ? 0 : t);
  for (int node = matrix.ntax; node < node_limit(a, matrix.ntax); ++node) {
    nodes.push_back(matching_node(terminals_of(a, node), b));
  }
  return write_nodes("Grptogrp", nodes);
}

std::set<std::vector<int>> groups_of(const_tree_span tree) {
  std::set<std::vector<int>> groups;
  for (int node = matrix.ntax + 1; node < node_limit(tree, matrix.ntax); ++node) {
    groups.insert(terminals_of(tree, node));
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
  open_brackets();
  const const_tree_span first = stored_tree(tree_argument());
  const const_tree_span second = stored_tree(tree_argument());
  close_brackets();
  const auto a = groups_of(first);
  const auto b = groups_of(second);
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
  std::vector<int> group;
  while (skip_blanks_peek() != ']') group.push_back(taxon_argument());
  close_brackets();
  std::sort(group.begin(), group.end());
  group.erase(std::unique(group.begin(), group.end()), group.end());
  return group.size() < 2 || matching_node(group, tree) > 0;
}

// Share of the taxa of either group that both have (Jaccard 1901), over the taxa of both trees.
double similarity(const std::vector<int>& a, const std::vector<int>& b) {
  std::vector<int> shared;
  std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(shared));
  const auto common = static_cast<double>(shared.size());
  return common / (static_cast<double>(a.size() + b.size()) - common);
}

// The first node where several are as similar. Terminals count for groups of one taxon only.
double most_similar_node() {
  open_brackets();
  const tree_and_node t = tree_then_node();
  const const_tree_span other = stored_tree(tree_argument());
  close_brackets();
  const std::vector<int> group = terminals_of(t.tree, t.node);
  if (t.node < matrix.ntax) return is_absent(other, t.node) ? 0 : t.node;
  int best = 0;
  double highest = 0;
  for (int node = matrix.ntax; node < node_limit(other, matrix.ntax); ++node) {
    const double value = similarity(group, terminals_of(other, node));
    if (value <= highest) continue;
    highest = value;
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

constexpr function_row rows[] = {
    {"gcomp", compare_two_groups},   {"eqgroup", equal_group},    {"grptogrp", group_to_group},
    {"grpdist", group_distance},     {"rfdist", robinson_foulds}, {"ismono", monophyletic},
    {"simgroup", most_similar_node}, {"gfreq", group_frequency},  {"freqlist", frequency_list},
    {"freqdlist", difference_list},
};

}  // namespace

std::span<const function_row> tree_group_functions() { return rows; }

}  // namespace zeb
