#include "trees/twin_taxa.h"

#include <algorithm>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/matrix.h"
#include "matrix/settings/taxon_settings.h"

namespace zeb {

twin_state twins;

namespace {

std::vector<std::uint8_t> activity() {
  return {matrix.taxon_active.begin(), matrix.taxon_active.begin() + matrix.ntax};
}

int taxon_that_stays(const std::vector<int>& group) {
  const bool has_outgroup = std::ranges::find(group, matrix.outgroup) != group.end();
  return has_outgroup ? matrix.outgroup : group.front();
}

}  // namespace

void set_twins_aside(const std::vector<std::vector<int>>& groups) {
  std::vector<std::pair<int, int>> pairs = twins_set_aside();
  std::vector<std::uint8_t> active = activity();
  for (const std::vector<int>& group : groups) {
    const int kept = taxon_that_stays(group);
    for (const int t : group) {
      if (t == kept) continue;
      pairs.emplace_back(t, kept);
      active[at(t)] = 0;
    }
  }
  if (std::ranges::count(active, 1) < fewest_active_taxa)
    error_end("Cannot have less than", fewest_active_taxa, "active taxa");
  set_active_taxa(active);
  twins = {matrix.generation, std::move(pairs)};
}

const std::vector<std::pair<int, int>>& twins_set_aside() {
  static const std::vector<std::pair<int, int>> none;
  return twins.generation == matrix.generation ? twins.pairs : none;
}

void take_twins_back() {
  std::vector<std::uint8_t> active = activity();
  for (const auto& [taxon, kept] : twins_set_aside()) active[at(taxon)] = 1;
  set_active_taxa(active);
  twins.pairs.clear();
}

int add_twins(tree_span tree, int ntax, const std::vector<std::pair<int, int>>& pairs) {
  std::vector<int> up(tree.size() + pairs.size(), -1);
  for (int v = 0; v < node_limit(tree, ntax); ++v)
    if (v > ntax || (v < ntax && !is_absent(tree, v))) up[at(v)] = tree[at(v)];
  int next = node_limit(tree, ntax);
  int added = 0;
  std::vector<int> node_of(at(ntax), -1);  // by taxon that stayed: the node of it and its twins
  // Who was set aside last may be the twin of those before.
  for (auto pair = pairs.rbegin(); pair != pairs.rend(); ++pair) {
    const auto [taxon, kept] = *pair;
    if (up[at(taxon)] >= 0 || up[at(kept)] < 0) continue;
    int& node = node_of[at(kept)];
    if (node < 0) {
      node = next++;
      up[at(node)] = up[at(kept)];
      up[at(kept)] = node;
    }
    up[at(taxon)] = node;
    ++added;
  }
  if (added > 0) record_from_ancestors(up, tree, ntax);
  return added;
}

}  // namespace zeb
