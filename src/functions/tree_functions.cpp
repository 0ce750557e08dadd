// Trees in memory: nodes, sizes, shape.
#include <algorithm>
#include <vector>

#include "base/errors.h"
#include "functions/arguments.h"
#include "functions/function_table.h"
#include "functions/tree_arguments.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

int ancestor(const_tree_span tree, int node) { return tree[static_cast<std::size_t>(node)]; }

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

// 1 less the imbalance of Colless (1982) as a share of its maximum: how much larger the largest
// clade of each node is than its smallest one, summed; the maximum is that of a comb.
double symmetry() {
  const const_tree_span tree = stored_tree(one_tree());
  const descendant_lists lists = descendants_of(tree, matrix.ntax);
  std::vector<int> order = nodes_rootward_first(lists, matrix.ntax);
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
    {"nnodes", node_count},
    {"tnodes", internal_nodes},
    {"tsize", taxa_of_tree},
    {"isintree", taxon_in_tree},
    {"eqtrees", equal_trees},
    {"tcount", copies_of_tree},
    {"symcoeff", symmetry},
    {"repspoly", representatives},
    {"splitgroup", split_of_group},
    {"downlist", down_list},
    {"uplist", up_list},
    {"deslist", descendant_list},
    {"grouplist", terminal_list},
};

}  // namespace

std::span<const function_row> tree_functions() { return rows; }

}  // namespace zeb
