#include "taxonomy/group_tests.h"

#include <cstdint>

#include "base/indices.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

/// Members of the group and others below each node.
struct node_counts {
  std::vector<int> members, others;
};

node_counts count_below(const taxonomic_groups& all, int group, const_tree_span tree, int ntax,
                        const descendant_lists& lists, const std::vector<int>& outward) {
  node_counts out{std::vector<int>(lists.nodes(), 0), std::vector<int>(lists.nodes(), 0)};
  for (int t = 0; t < ntax; ++t) {
    if (is_absent(tree, t)) continue;
    if (all.groups[at(group)].members.contains(t))
      out.members[at(t)] = 1;
    else if (!all.may_belong(t, group))
      out.others[at(t)] = 1;
  }
  for (auto v = outward.rbegin(); v != outward.rend(); ++v)
    for (const int child : lists.children(*v)) {
      out.members[at(*v)] += out.members[at(child)];
      out.others[at(*v)] += out.others[at(child)];
    }
  return out;
}

}  // namespace

group_on_tree test_group(const taxonomic_groups& all, int group, const_tree_span tree, int ntax) {
  const descendant_lists lists = descendants_of(tree, ntax);
  const std::vector<int> outward = internal_nodes_root_first(lists, ntax);
  const node_counts below = count_below(all, group, tree, ntax, lists, outward);
  const int root = ntax;
  group_on_tree out{
      .present = below.members[at(root)], .outside = taxon_set(ntax), .intruders = taxon_set(ntax)};
  if (!out.can_be_tested()) return out;
  const auto surplus = [&](int v) { return below.members[at(v)] - below.others[at(v)]; };
  const auto is_pure = [&](int v) { return below.members[at(v)] > 0 && below.others[at(v)] == 0; };
  out.node = root;
  for (int v = 0; v < static_cast<int>(lists.nodes()); ++v) {
    if (v != root && tree[at(v)] == 0) continue;  // absent
    // Of clades that do alike the smaller one: nodes of their taxa are further from the root.
    if (below.members[at(v)] > 1 &&
        (surplus(v) > surplus(out.node) ||
         (surplus(v) == surplus(out.node) && descends_from(tree, ntax, v, out.node))))
      out.node = v;
    if (is_pure(v) && (v == root || !is_pure(tree[at(v)]))) ++out.pieces;
    if (below.members[at(v)] == 0 && below.others[at(v)] == below.others[at(root)])
      out.on_other_root = true;
  }
  std::vector<std::uint8_t> inside(at(ntax), 0);
  flag_terminals(tree, ntax, out.node, inside);
  for (int t = 0; t < ntax; ++t) {
    if (below.members[at(t)] > 0 && !inside[at(t)]) out.outside.insert(t);
    if (below.others[at(t)] > 0 && inside[at(t)]) out.intruders.insert(t);
  }
  return out;
}

}  // namespace zeb
