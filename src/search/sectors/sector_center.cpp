#include "search/sectors/sector_center.h"

#include <algorithm>

#include "base/indices.h"
#include "matrix/matrix.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

/// The first active terminal outward of a node, or the node itself; -1 none.
int active_taxon_above(const_tree_span tree, int node) {
  std::vector<std::uint8_t> above(at(matrix.ntax), 0);
  flag_terminals(tree, matrix.ntax, node, above);
  for (int t = 0; t < matrix.ntax; ++t)
    if (above[at(t)] && matrix.taxon_active[at(t)]) return t;
  return -1;
}

}  // namespace

std::vector<int> taxa_around(const_tree_span tree, int node) {
  const descendant_lists lists = descendants_of(tree, matrix.ntax);
  // The root is on a branch between its two descendants.
  if (node == matrix.ntax && lists.count[at(node)] == 2)
    for (const int v : lists.children(matrix.ntax)) node = std::max(node, v);
  std::vector<int> taxa;
  if (node < matrix.ntax) return {node};
  for (const int v : lists.children(node))
    if (const int taxon = active_taxon_above(tree, v); taxon >= 0) taxa.push_back(taxon);
  std::vector<std::uint8_t> above(at(matrix.ntax), 0);
  flag_terminals(tree, matrix.ntax, node, above);
  for (int t = 0; t < matrix.ntax; ++t)
    if (!above[at(t)] && matrix.taxon_active[at(t)] && !is_absent(tree, t)) taxa.push_back(t);
  return taxa;
}

int node_between(std::span<const std::int32_t> tree, int n, int a, int b, int c) {
  std::vector<int> met(tree.size(), 0);  // paths to the root that pass
  for (const int terminal : {a, b, c})
    for (int v = terminal; v != n; v = tree[at(v)]) ++met[at(v)];
  // Two of the paths meet outward of the third, or, in a polytomy, all at once.
  for (const int meeting : {2, 3})
    for (const int terminal : {a, b})
      for (int v = terminal; v != n; v = tree[at(v)])
        if (met[at(v)] == meeting) return v;
  return a;
}

}  // namespace zeb
