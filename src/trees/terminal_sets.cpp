#include "trees/terminal_sets.h"

#include <algorithm>

#include "base/indices.h"
#include "trees/tree_walks.h"

namespace zeb {

namespace {

std::uint64_t scrambled(std::uint64_t z) {
  z += 0x9e3779b97f4a7c15ULL;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
  return z ^ (z >> 31);
}

}  // namespace

std::vector<terminal_set_key> terminal_set_keys(const_tree_span tree, int ntax) {
  const descendant_lists lists = descendants_of(tree, ntax);
  std::vector<terminal_set_key> keys(at(node_limit(tree, ntax)));
  for (int t = 0; t < ntax; ++t) {
    const auto seed = static_cast<std::uint64_t>(t);
    if (!is_absent(tree, t)) keys[at(t)] = {scrambled(2 * seed), scrambled(2 * seed + 1)};
  }
  const std::vector<int> outward = internal_nodes_root_first(lists, ntax);
  for (auto n = outward.rbegin(); n != outward.rend(); ++n) {
    for (const int child : lists.children(*n)) {
      keys[at(*n)].first += keys[at(child)].first;
      keys[at(*n)].second += keys[at(child)].second;
    }
  }
  return keys;
}

terminal_set_key key_of_branch(const terminal_set_key& set, const terminal_set_key& all) {
  return std::min(set, terminal_set_key{all.first - set.first, all.second - set.second});
}

}  // namespace zeb
