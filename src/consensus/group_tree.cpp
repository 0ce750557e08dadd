#include "consensus/group_tree.h"

#include <algorithm>
#include <bit>

#include "base/errors.h"
#include "base/indices.h"

namespace zeb {
namespace {

/// Calls `visit` with each taxon of the group.
template <class function>
void for_each_taxon(const group_record& group, const function& visit) {
  for (int w = group.first_word; w <= group.last_word; ++w)
    for (set_word rest = group.words[w]; rest != 0; rest &= rest - 1)
      visit(w * taxa_per_word + std::countr_zero(rest));
}

}  // namespace

group_tree bush(int ntax, std::span<const std::uint8_t> absent) {
  group_tree out{std::vector<tree_node>(at(2 * ntax - 1), 0),
                 std::vector<int>(at(2 * ntax - 1), -1)};
  for (int t = 0; t < ntax; ++t) out.tree[at(t)] = absent.empty() || !absent[at(t)] ? ntax : 0;
  out.tree[at(ntax)] = ntax + 1;
  return out;
}

group_tree build_tree_from_groups(const group_tally& tally, int min_count,
                                  std::span<const std::uint8_t> absent) {
  const int ntax = tally.ntax();
  std::vector<const group_record*> groups;
  for (const group_record& group : tally.groups())
    if (group.size > 1 && group.size < tally.taxa_in_play() && group.count >= min_count)
      groups.push_back(&group);
  // From the largest down the ancestor of all the group's taxa is the smallest group around it.
  std::stable_sort(groups.begin(), groups.end(),
                   [](const group_record* a, const group_record* b) { return a->size > b->size; });
  group_tree out = bush(ntax, absent);
  int next = ntax + 1;
  for (const group_record* group : groups) {
    ALWAYS_CHECK(next < 2 * ntax - 1, "groups of a consensus that contradict each other");
    const int node = next++;
    out.values[at(node)] = group->count;
    for_each_taxon(*group, [&](int taxon) {
      out.tree[at(node)] = out.tree[at(taxon)];
      out.tree[at(taxon)] = node;
    });
  }
  out.tree[at(ntax)] = next;
  normalise_with_values(out, ntax);
  return out;
}

void normalise_with_values(group_tree& result, int ntax) {
  const std::vector<tree_node>& old = result.tree;
  std::vector<int> number(old.size(), -1);
  number[at(ntax)] = ntax;
  group_tree out{std::vector<tree_node>(old.size(), 0), std::vector<int>(old.size(), -1)};
  int next = ntax + 1;
  for (int t = 0; t < ntax; ++t) {
    if (is_absent(old, t)) continue;
    for (int n = old[at(t)]; number[at(n)] < 0; n = old[at(n)]) number[at(n)] = next++;
    out.tree[at(t)] = number[at(old[at(t)])];
  }
  for (std::size_t n = at(ntax) + 1; n < old.size(); ++n) {
    if (number[n] < 0) continue;
    out.tree[at(number[n])] = number[at(old[n])];
    out.values[at(number[n])] = result.values[n];
  }
  out.tree[at(ntax)] = next;
  result = std::move(out);
}

}  // namespace zeb
