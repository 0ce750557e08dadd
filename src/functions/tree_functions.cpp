// Trees in memory: nodes, groups, sizes, distances.
#include <algorithm>
#include <set>
#include <vector>

#include "functions/arguments.h"
#include "functions/function_table.h"
#include "matrix/matrix.h"
#include "shell/errors.h"
#include "shell/interpreter.h"
#include "shell/lexer.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

struct tree_and_node {
  const_tree_span tree;
  int number = 0;
  int node = 0;
};

int one_tree() {
  open_brackets();
  const int tree = tree_argument();
  close_brackets();
  return tree;
}

tree_and_node tree_then_node() {
  tree_and_node result;
  result.number = tree_argument();
  result.tree = stored_tree(result.number);
  result.node = node_argument(result.number);
  return result;
}

tree_and_node bracketed_tree_and_node() {
  open_brackets();
  const tree_and_node result = tree_then_node();
  close_brackets();
  return result;
}

int ancestor(const_tree_span tree, int node) { return tree[static_cast<std::size_t>(node)]; }

std::vector<int> terminals_of(const_tree_span tree, int node) {
  std::vector<int> result;
  for (int t = 0; t < matrix.ntax; ++t) {
    if (t == node || (!is_absent(tree, t) && descends_from(tree, matrix.ntax, t, node)))
      result.push_back(t);
  }
  return result;
}

double write_nodes(const char* name, const std::vector<int>& nodes) {
  return write_list(name, std::vector<double>(nodes.begin(), nodes.end()));
}

double last_tree() { return store.ntrees - 1; }
double last_vault_tree() { return store.vault_trees - 1; }

double ancestor_of() {
  const tree_and_node t = bracketed_tree_and_node();
  return t.node == matrix.ntax ? -1 : ancestor(t.tree, t.node);
}

double sister_of() {
  const tree_and_node t = bracketed_tree_and_node();
  if (t.node == matrix.ntax) return -1;
  const descendant_lists lists = descendants_of(t.tree, matrix.ntax);
  for (int d = lists.first[static_cast<std::size_t>(ancestor(t.tree, t.node))]; d >= 0;
       d = lists.sibling[static_cast<std::size_t>(d)]) {
    if (d != t.node) return d;
  }
  return -1;
}

double first_descendant() {
  const tree_and_node t = bracketed_tree_and_node();
  return descendants_of(t.tree, matrix.ntax).first[static_cast<std::size_t>(t.node)];
}

double fork_size() {
  const tree_and_node t = bracketed_tree_and_node();
  return descendants_of(t.tree, matrix.ntax).count[static_cast<std::size_t>(t.node)];
}

double terminals_below() {
  const tree_and_node t = bracketed_tree_and_node();
  return static_cast<double>(terminals_of(t.tree, t.node).size());
}

double largest_fork() {
  const tree_and_node t = bracketed_tree_and_node();
  const descendant_lists lists = descendants_of(t.tree, matrix.ntax);
  std::size_t largest = 0;
  for (int d = lists.first[static_cast<std::size_t>(t.node)]; d >= 0;
       d = lists.sibling[static_cast<std::size_t>(d)]) {
    largest = std::max(largest, terminals_of(t.tree, d).size());
  }
  return static_cast<double>(largest);
}

std::vector<int> path_to_root(const_tree_span tree, int node) {
  std::vector<int> path = {node};
  while (path.back() != matrix.ntax) path.push_back(ancestor(tree, path.back()));
  return path;
}

// Steps from each of two nodes to their most recent common ancestor.
struct common_ancestor {
  int node = 0;
  int distance = 0;
};

common_ancestor join(const_tree_span tree, int a, int b) {
  const std::vector<int> from_a = path_to_root(tree, a);
  const std::vector<int> from_b = path_to_root(tree, b);
  for (std::size_t i = 0; i < from_a.size(); ++i) {
    const auto at = std::find(from_b.begin(), from_b.end(), from_a[i]);
    if (at != from_b.end())
      return {from_a[i], static_cast<int>(i) + static_cast<int>(at - from_b.begin())};
  }
  return {matrix.ntax, 0};
}

common_ancestor two_nodes() {
  open_brackets();
  const tree_and_node t = tree_then_node();
  const int other = node_argument(t.number);
  close_brackets();
  return join(t.tree, t.node, other);
}

double common_node() { return two_nodes().node; }
double node_distance() { return two_nodes().distance; }

double root_node() {
  if (brackets_follow()) one_tree();
  require_data("using data in expressions");
  return matrix.ntax;
}

double largest_node() {
  if (!brackets_follow()) {
    require_data("using data in expressions");
    return matrix.nnodes - 1;
  }
  return node_limit(stored_tree(one_tree()), matrix.ntax) - 1;
}

double internal_nodes() { return node_limit(stored_tree(one_tree()), matrix.ntax) - matrix.ntax; }

int tree_size(const_tree_span tree) {
  int count = 0;
  for (int t = 0; t < matrix.ntax; ++t) count += !is_absent(tree, t);
  return count;
}

double taxa_of_tree() { return tree_size(stored_tree(one_tree())); }

double taxon_in_tree() {
  open_brackets();
  const int tree = tree_argument();
  const int taxon = taxon_argument();
  close_brackets();
  return !is_absent(stored_tree(tree), taxon);
}

double equal_trees() {
  open_brackets();
  const const_tree_span a = stored_tree(tree_argument());
  const const_tree_span b = stored_tree(tree_argument());
  close_brackets();
  const auto used = static_cast<std::ptrdiff_t>(node_limit(a, matrix.ntax));
  return node_limit(a, matrix.ntax) == node_limit(b, matrix.ntax) &&
         std::equal(a.begin(), a.begin() + used, b.begin());
}

// ---- lists ----

double internal_list(bool tips_first) {
  open_brackets();
  const int number = tree_argument();
  const const_tree_span tree = stored_tree(number);
  int top = matrix.ntax;
  if (skip_blanks_peek() != ']') top = node_argument(number);
  close_brackets();
  std::vector<int> nodes;
  for (const int node : nodes_rootward_first(descendants_of(tree, matrix.ntax), matrix.ntax)) {
    if (descends_from(tree, matrix.ntax, node, top)) nodes.push_back(node);
  }
  if (tips_first) std::reverse(nodes.begin(), nodes.end());
  return write_nodes(tips_first ? "Downlist" : "Uplist", nodes);
}

double down_list() { return internal_list(true); }
double up_list() { return internal_list(false); }

double descendant_list() {
  const tree_and_node t = bracketed_tree_and_node();
  const descendant_lists lists = descendants_of(t.tree, matrix.ntax);
  std::vector<int> nodes;
  for (int d = lists.first[static_cast<std::size_t>(t.node)]; d >= 0;
       d = lists.sibling[static_cast<std::size_t>(d)]) {
    nodes.push_back(d);
  }
  return write_nodes("Deslist", nodes);
}

double terminal_list() {
  const tree_and_node t = bracketed_tree_and_node();
  return write_nodes("Grouplist", terminals_of(t.tree, t.node));
}

// ---- groups of two trees ----

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

constexpr function_row rows[] = {
    {"ntrees", last_tree},
    {"vtrees", last_vault_tree},
    {"anc", ancestor_of},
    {"sister", sister_of},
    {"firstdes", first_descendant},
    {"nodfork", fork_size},
    {"numdes", terminals_below},
    {"maxcfork", largest_fork},
    {"comnod", common_node},
    {"distnode", node_distance},
    {"root", root_node},
    {"nnodes", largest_node},
    {"tnodes", internal_nodes},
    {"tsize", taxa_of_tree},
    {"isintree", taxon_in_tree},
    {"eqtrees", equal_trees},
    {"downlist", down_list},
    {"uplist", up_list},
    {"deslist", descendant_list},
    {"grouplist", terminal_list},
    {"gcomp", compare_two_groups},
    {"eqgroup", equal_group},
    {"grptogrp", group_to_group},
    {"grpdist", group_distance},
    {"rfdist", robinson_foulds},
    {"ismono", monophyletic},
};

}  // namespace

std::span<const function_row> tree_functions() { return rows; }

}  // namespace zeb
