#include "compare/combined_data.h"

namespace zeb {

std::vector<tree_node> renumbered_tree(const std::vector<tree_node>& tree,
                                       const std::vector<int>& new_numbers, int ntax) {
  const int former_ntax = static_cast<int>(new_numbers.size());
  const auto number = [&](int node) {
    return node < former_ntax ? new_numbers[at(node)] : node - former_ntax + ntax;
  };
  std::vector<int> ancestors(at(2 * ntax - 1), -1);
  for (int node = 0; node < node_limit(tree, former_ntax); ++node) {
    const bool is_root = node == former_ntax;
    const bool absent = node < former_ntax && is_absent(tree, node);
    if (!is_root && !absent) ancestors[at(number(node))] = number(tree[at(node)]);
  }
  std::vector<tree_node> record(at(2 * ntax - 1), 0);
  record_from_ancestors(ancestors, record, ntax);
  return record;
}

}  // namespace zeb
