#include "trees/tree_equality.h"

#include <algorithm>
#include <unordered_map>

#include "base/indices.h"
#include "matrix/matrix.h"
#include "trees/hooks.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

/// The tree as it is compared.
std::vector<tree_node> compared_form(int number, const tree_collapser& collapse) {
  const tree_span tree = stored_tree(number);
  std::vector<tree_node> form(tree.begin(), tree.end());
  if (collapse) collapse(form);
  form.resize(at(node_limit(form, matrix.ntax)));
  return form;
}

std::uint64_t hash_of(const std::vector<tree_node>& form) {
  std::uint64_t hash = form.size();
  for (const tree_node cell : form) {
    hash = (hash ^ static_cast<std::uint32_t>(cell)) * 0x9e3779b97f4a7c15ULL;
    hash ^= hash >> 31;
  }
  return hash;
}

}  // namespace

std::vector<int> first_equal_trees(std::span<const std::uint8_t> chosen) {
  std::vector<int> first(chosen.size(), -1);
  const tree_collapser collapse =
      hooks_of_trees.collapser ? hooks_of_trees.collapser() : tree_collapser();
  std::unordered_multimap<std::uint64_t, int> known;  // hash: a tree with no equal before it
  for (int t = 0; t < static_cast<int>(chosen.size()); ++t) {
    if (!chosen[at(t)]) continue;
    const std::vector<tree_node> form = compared_form(t, collapse);
    const std::uint64_t hash = hash_of(form);
    const auto [from, to] = known.equal_range(hash);
    const auto same = std::find_if(
        from, to, [&](const auto& entry) { return compared_form(entry.second, collapse) == form; });
    first[at(t)] = same == to ? t : same->second;
    if (same == to) known.emplace(hash, t);
  }
  return first;
}

}  // namespace zeb
