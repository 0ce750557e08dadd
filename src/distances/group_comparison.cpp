#include "distances/group_comparison.h"

#include <algorithm>
#include <unordered_set>

#include "base/indices.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

/// The shared taxa below each node, up to the last one.
std::vector<taxon_set> sets_below(const_tree_span tree, int ntax, const taxon_set& shared) {
  std::vector<taxon_set> sets(at(node_limit(tree, ntax)), taxon_set(ntax));
  for (const int t : shared) sets[at(t)].insert(t);
  const descendant_lists lists = descendants_of(tree, ntax);
  const std::vector<int> order = internal_nodes_root_first(lists, ntax);
  for (auto node = order.rbegin(); node != order.rend(); ++node)
    for (const int child : lists.children(*node)) sets[at(*node)] |= sets[at(child)];
  return sets;
}

bool is_group(const taxon_set& taxa, const taxon_set& shared, bool unrooted) {
  const int size = taxa.count();
  return size > 1 && size < shared.count() - (unrooted ? 1 : 0);
}

/// Without roots, the side that lacks the first taxon stands for both.
taxon_set as_compared(const taxon_set& taxa, const taxon_set& shared, bool unrooted) {
  return unrooted && taxa.contains(shared.first()) ? shared - taxa : taxa;
}

bool overlap(const taxon_set& a, const taxon_set& b) {
  return a.meets(b) && !a.is_subset_of(b) && !b.is_subset_of(a);
}

}  // namespace

std::vector<compared_group> compare_groups(const_tree_span tree, const_tree_span other, int ntax,
                                           const taxon_set& shared, bool unrooted) {
  std::unordered_set<taxon_set> others;
  for (const taxon_set& taxa : sets_below(other, ntax, shared))
    if (is_group(taxa, shared, unrooted)) others.insert(as_compared(taxa, shared, unrooted));
  std::unordered_set<taxon_set> met;
  std::vector<compared_group> groups;
  const std::vector<taxon_set> sets = sets_below(tree, ntax, shared);
  for (std::size_t node = at(ntax) + 1; node < sets.size(); ++node) {
    if (!is_group(sets[node], shared, unrooted)) continue;
    const taxon_set taxa = as_compared(sets[node], shared, unrooted);
    if (!met.insert(taxa).second) continue;  // the same once the tree is cut
    group_status status = group_status::absent;
    if (others.contains(taxa))
      status = group_status::shared;
    else if (std::ranges::any_of(others, [&](const taxon_set& o) { return overlap(taxa, o); }))
      status = group_status::contradicted;
    groups.push_back({static_cast<int>(node), status, sets[node]});
  }
  return groups;
}

int groups_with(const std::vector<compared_group>& groups, group_status status) {
  return static_cast<int>(
      std::ranges::count_if(groups, [&](const compared_group& g) { return g.status == status; }));
}

}  // namespace zeb
