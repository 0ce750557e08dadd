#include "consensus/selection.h"

#include <algorithm>

#include "base/indices.h"
#include "engine/collapsing/collapsing.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

bool is_excluded(const tree_selection& selection, int taxon) {
  return !selection.excluded.empty() && selection.excluded[at(taxon)] != 0;
}

}  // namespace

tree_selection select_stored_trees(std::span<const std::uint8_t> selected,
                                   std::span<const std::uint8_t> excluded) {
  tree_selection out;
  out.ntax = matrix.ntax;
  for (int t = 0; t < store.ntrees; ++t)
    if (selected[at(t)]) out.trees.push_back(stored_tree(t));
  if (std::find(excluded.begin(), excluded.end(), 1) != excluded.end())
    out.excluded.assign(excluded.begin(), excluded.end());
  out.collapse = collapsing.temporary && collapsing.rule != 0;
  out.low_memory = consensus.low_memory_always;
  return out;
}

std::vector<std::uint8_t> taxa_left_out(const tree_selection& selection) {
  std::vector<std::uint8_t> out(at(selection.ntax), 1);
  for (int t = 0; t < selection.ntax; ++t) {
    if (is_excluded(selection, t)) continue;
    for (const const_tree_span tree : selection.trees)
      if (!is_absent(tree, t)) {
        out[at(t)] = 0;
        break;
      }
  }
  return out;
}

bool some_trees_lack_taxa(const tree_selection& selection) {
  for (const const_tree_span tree : selection.trees)
    for (int t = 0; t < selection.ntax; ++t)
      if (!is_excluded(selection, t) && is_absent(tree, t)) return true;
  return false;
}

int trees_above_cut(int cut, int n_trees) {
  return static_cast<int>(
      std::min<long long>(static_cast<long long>(cut) * n_trees / 100 + 1, n_trees));
}

}  // namespace zeb
