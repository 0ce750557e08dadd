#include "mapping/common_groups.h"

#include <cstdint>
#include <map>

#include "base/indices.h"
#include "engine/collapsing/collapsing.h"
#include "matrix/matrix.h"
#include "trees/terminal_sets.h"
#include "trees/tree_record.h"

namespace zeb {
namespace {

using node_of_group = std::map<terminal_set_key, int>;

node_of_group groups_of(const_tree_span tree) {
  node_of_group groups;
  const std::vector<terminal_set_key> keys = terminal_set_keys(tree, matrix.ntax);
  for (int v = 0; at(v) < keys.size(); ++v)
    if (v >= matrix.ntax || !is_absent(tree, v)) groups.emplace(keys[at(v)], v);
  return groups;
}

}  // namespace

common_groups groups_in_all(std::span<const const_tree_span> trees) {
  std::vector<node_of_group> groups;
  for (const const_tree_span tree : trees) groups.push_back(groups_of(tree));
  common_groups common;
  const const_tree_span first = trees.front();
  common.tree.assign(first.begin(), first.end());
  std::vector<terminal_set_key> keys = terminal_set_keys(first, matrix.ntax);
  std::vector<std::uint8_t> marks(first.size(), 1);
  for (int v = matrix.ntax + 1; at(v) < keys.size(); ++v)
    for (const node_of_group& of_tree : groups)
      if (!of_tree.contains(keys[at(v)])) marks[at(v)] = 0;
  condense_tree(common.tree, marks);
  keys = terminal_set_keys(common.tree, matrix.ntax);
  for (const node_of_group& of_tree : groups) {
    std::vector<int>& nodes = common.nodes.emplace_back(keys.size(), -1);
    for (int v = 0; at(v) < keys.size(); ++v) {
      if (v < matrix.ntax && is_absent(common.tree, v)) continue;
      const auto found = of_tree.find(keys[at(v)]);
      if (found != of_tree.end()) nodes[at(v)] = found->second;
    }
    nodes[at(matrix.ntax)] = matrix.ntax;
  }
  return common;
}

}  // namespace zeb
