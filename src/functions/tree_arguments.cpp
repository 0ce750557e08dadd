#include "functions/tree_arguments.h"

#include "functions/arguments.h"
#include "macro/assignment.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"
#include "trees/tree_walks.h"

namespace zeb {

int one_tree() {
  open_brackets();
  const int tree = tree_argument();
  close_brackets();
  return tree;
}

std::pair<const_tree_span, const_tree_span> two_trees() {
  open_brackets();
  const const_tree_span first = stored_tree(tree_argument());
  const const_tree_span second = stored_tree(tree_argument());
  close_brackets();
  return {first, second};
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

std::vector<int> terminals_of(const_tree_span tree, int node) {
  if (node < matrix.ntax) return {node};
  std::vector<std::uint8_t> marks(static_cast<std::size_t>(matrix.ntax), 0);
  flag_terminals(tree, matrix.ntax, node, marks);
  std::vector<int> result;
  for (int t = 0; t < matrix.ntax; ++t) {
    if (marks[static_cast<std::size_t>(t)]) result.push_back(t);
  }
  return result;
}

double write_nodes(const char* name, const std::vector<int>& nodes) {
  return write_list(name, std::vector<double>(nodes.begin(), nodes.end()));
}

}  // namespace zeb
