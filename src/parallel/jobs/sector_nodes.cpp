#include "parallel/jobs/sector_nodes.h"

#include <algorithm>

#include "base/indices.h"
#include "matrix/matrix.h"
#include "trees/tree_record.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

constexpr int nothing = -1;

/// The last common ancestors of nodes.
class common_ancestors {
 public:
  explicit common_ancestors(const std::vector<tree_node>& tree)
      : tree_(tree), depth_(tree.size(), 0) {
    for (const int v : internal_nodes_root_first(descendants_of(tree, matrix.ntax), matrix.ntax))
      if (v != matrix.ntax) depth_[at(v)] = depth_[at(tree[at(v)])] + 1;
    for (int t = 0; t < matrix.ntax; ++t) depth_[at(t)] = depth_[at(tree[at(t)])] + 1;
  }

  /// Of `nothing` and a node, that node.
  int of(int a, int b) const {
    if (a == nothing || b == nothing) return std::max(a, b);
    while (a != b) {
      int& deeper = depth_[at(a)] >= depth_[at(b)] ? a : b;
      deeper = tree_[at(deeper)];
    }
    return a;
  }

 private:
  const std::vector<tree_node>& tree_;
  std::vector<int> depth_;
};

}  // namespace

std::vector<std::int32_t> nodes_in_sector(const sector_place& place,
                                          const std::vector<tree_node>& whole) {
  const common_ancestors common(whole);
  std::vector<int> node_of(place.reduced_tree.size(), nothing);  // in the whole tree
  for (std::size_t i = 0; i < place.terminals.size(); ++i) {
    std::vector<std::uint8_t> below(at(matrix.ntax), 0);
    flag_terminals(place.tree, matrix.ntax, place.terminals[i], below);
    for (int t = 0; t < matrix.ntax; ++t)
      if (below[at(t)]) node_of[i + 1] = common.of(node_of[i + 1], t);
  }
  const descendant_lists lists = descendants_of(place.reduced_tree, place.taxa);
  std::vector<int> inner = internal_nodes_root_first(lists, place.taxa);
  std::ranges::reverse(inner);
  std::vector<std::int32_t> numbers(whole.size(), nothing);
  for (const int v : inner) {
    if (v == place.taxa) continue;  // where the rest of the tree is joined
    for (const int child : lists.children(v))
      node_of[at(v)] = common.of(node_of[at(v)], node_of[at(child)]);
  }
  for (std::size_t v = 1; v < node_of.size(); ++v)
    if (node_of[v] != nothing) numbers[at(node_of[v])] = static_cast<std::int32_t>(v);
  return numbers;
}

}  // namespace zeb
