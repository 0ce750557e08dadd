// Trees in memory: nodes, sizes, shape.
#include <algorithm>
#include <vector>

#include "functions/arguments.h"
#include "functions/subjects.h"
#include "functions/tree_arguments.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/constraints/constraint_test.h"
#include "trees/tree_store.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

int ancestor(const_tree_span tree, int node) { return tree[static_cast<std::size_t>(node)]; }

double last_tree() { return store.ntrees - 1; }
double last_vault_tree() { return store.vault.ntrees - 1; }

double ancestor_of() {
  const tree_and_node t = bracketed_tree_and_node();
  return t.node == matrix.ntax ? -1 : ancestor(t.tree, t.node);
}

double sister_of() {
  const tree_and_node t = bracketed_tree_and_node();
  if (t.node == matrix.ntax) return -1;
  const descendant_lists lists = descendants_of(t.tree, matrix.ntax);
  for (const int d : lists.children(ancestor(t.tree, t.node))) {
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
  for (const int d : lists.children(t.node)) {
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

// Without a tree, as many as a dichotomous one has.
double node_count() {
  if (!brackets_follow()) {
    require_data("using data in expressions");
    return matrix.nnodes;
  }
  return node_limit(stored_tree(one_tree()), matrix.ntax);
}

double internal_nodes() { return node_limit(stored_tree(one_tree()), matrix.ntax) - matrix.ntax; }

int tree_size(const_tree_span tree) {
  int count = 0;
  for (int t = 0; t < matrix.ntax; ++t) count += !is_absent(tree, t);
  return count;
}

double constraints_fulfilled() {
  const const_tree_span tree = stored_tree(one_tree());
  require_constraints();
  return constraint_test().judge(tree).fulfilled;
}

double taxa_of_tree() { return tree_size(stored_tree(one_tree())); }

double taxon_in_tree() {
  open_brackets();
  const int tree = tree_argument();
  const int taxon = taxon_argument();
  close_brackets();
  return !is_absent(stored_tree(tree), taxon);
}

bool same_tree(const_tree_span a, const_tree_span b) {
  const auto used = static_cast<std::ptrdiff_t>(node_limit(a, matrix.ntax));
  return node_limit(a, matrix.ntax) == node_limit(b, matrix.ntax) &&
         std::equal(a.begin(), a.begin() + used, b.begin());
}

double equal_trees() {
  const auto [a, b] = two_trees();
  return same_tree(a, b);
}

double copies_of_tree() {
  const const_tree_span tree = stored_tree(one_tree());
  int count = 0;
  for (int t = 0; t < store.ntrees; ++t) count += same_tree(stored_tree(t), tree);
  return count;
}

// 1 less the imbalance of the tree as a share of the most there can be. The imbalance sums over all
// nodes how much larger the largest clade of a node is than its smallest one; a comb has the most.
double symmetry() {
  const const_tree_span tree = stored_tree(one_tree());
  const descendant_lists lists = descendants_of(tree, matrix.ntax);
  std::vector<int> order = internal_nodes_root_first(lists, matrix.ntax);
  std::vector<int> sizes(lists.nodes(), 1);
  double imbalance = 0;
  for (auto node = order.rbegin(); node != order.rend(); ++node) {
    int sum = 0;
    int largest = 0;
    int smallest = matrix.ntax;
    for (const int d : lists.children(*node)) {
      const int size = sizes[static_cast<std::size_t>(d)];
      sum += size;
      largest = std::max(largest, size);
      smallest = std::min(smallest, size);
    }
    sizes[static_cast<std::size_t>(*node)] = sum;
    imbalance += std::max(0, largest - smallest);
  }
  const double n = sizes[static_cast<std::size_t>(matrix.ntax)];
  return n < 3 ? 1 : 1 - imbalance / ((n - 1) * (n - 2) / 2);
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
  for (const int node : internal_nodes_root_first(descendants_of(tree, matrix.ntax), matrix.ntax)) {
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
  for (const int d : lists.children(t.node)) {
    nodes.push_back(d);
  }
  return write_nodes("Deslist", nodes);
}

double terminal_list() {
  const tree_and_node t = bracketed_tree_and_node();
  return write_nodes("Grouplist", terminals_of(t.tree, t.node));
}

// One terminal of each descendant of a node, the first.
double representatives() {
  const tree_and_node t = bracketed_tree_and_node();
  const descendant_lists lists = descendants_of(t.tree, matrix.ntax);
  std::vector<int> taxa;
  for (const int d : lists.children(t.node)) {
    taxa.push_back(terminals_of(t.tree, d).front());
  }
  return write_nodes("Repspoly", taxa);
}

// By taxon, which descendant of the node holds it, from 1; 0 outside the node's group.
double split_of_group() {
  const tree_and_node t = bracketed_tree_and_node();
  const descendant_lists lists = descendants_of(t.tree, matrix.ntax);
  std::vector<int> parts(static_cast<std::size_t>(matrix.ntax), 0);
  int part = 0;
  for (const int d : lists.children(t.node)) {
    ++part;
    for (const int taxon : terminals_of(t.tree, d)) parts[static_cast<std::size_t>(taxon)] = part;
  }
  return write_nodes("Splitgroup", parts);
}

// clang-format off
constexpr expression_function rows[] = {
    {"ntrees", "", "number of the last tree in memory; -1 with none", last_tree},
    {"vtrees", "", "number of the last tree in the vault; -1 with none", last_vault_tree},
    {"anc", "[T N]", "ancestor of node N of tree T", ancestor_of, function_list::general, "argnumber"},
    {"sister", "[T N]", "sister of node N of tree T, the first of several", sister_of},
    {"mono", "[T]", "constraints fulfilled by tree T", constraints_fulfilled, function_list::general, "mplik"},
    {"firstdes", "[T N]", "first descendant of node N of tree T", first_descendant, function_list::general, "fit"},
    {"nodfork", "[T N]", "number of immediate descendants of node N of tree T", fork_size},
    {"numdes", "[T N]", "terminals below node N of tree T", terminals_below},
    {"maxcfork", "[T N]", "largest clade at the fork of node N of tree T", largest_fork},
    {"comnod", "[T N1 N2]", "most recent common ancestor of nodes N1 and N2 of tree T", common_node},
    {"distnode", "[T N1 N2]", "branches between nodes N1 and N2 of tree T", node_distance},
    {"root", "[T]", "number of the root node of tree T (T optional)", root_node},
    {"nnodes", "[T]", "number of nodes of tree T, the largest node number plus one (T optional: of a dichotomous tree)", node_count},
    {"tnodes", "[T]", "number of internal nodes of tree T", internal_nodes},
    {"tsize", "[T]", "number of taxa of tree T", taxa_of_tree},
    {"isintree", "[T taxon]", "1 if the taxon is in tree T", taxon_in_tree},
    {"eqtrees", "[T1 T2]", "1 if the trees are equal", equal_trees},
    {"tcount", "[T]", "number of trees in memory that are equal to tree T, itself included", copies_of_tree},
    {"symcoeff", "[T]", "symmetry of tree T: 1 symmetric, 0 a comb (1 less the imbalance of Colless over its maximum)", symmetry},
    {"repspoly", "[T N]", "list of one terminal, the first, of each descendant of node N of tree T", representatives},
    {"splitgroup", "[T N]", "list by taxon of the descendant of node N of tree T that holds it, from 1; 0 for taxa outside the group", split_of_group},
    {"downlist", "[T]", "internal nodes of tree T, from the tips to the root", down_list},
    {"uplist", "[T N]", "internal nodes of tree T above node N, from N to the tips (N optional)", up_list},
    {"deslist", "[T N]", "immediate descendants of node N of tree T", descendant_list, function_list::general, "downlist"},
    {"grouplist", "[T N]", "terminals that belong to node N of tree T", terminal_list},
};
// clang-format on

}  // namespace

const std::span<const expression_function> tree_functions = rows;

}  // namespace zeb
