#include "mapping/apomorphies.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>

#include "base/indices.h"
#include "base/interrupts.h"
#include "matrix/character_steps.h"
#include "matrix/costs/character_costs.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

bool tells_direction(int character) {
  return matrix.characters[at(character)].is_sankoff && costs_of_character(character).is_rooted();
}

std::vector<std::uint8_t> taxa_of(const tree_shape& shape) {
  std::vector<std::uint8_t> taxa(at(matrix.ntax), 0);
  for (int t = 0; t < matrix.ntax; ++t) taxa[at(t)] = shape.has(t);
  return taxa;
}

/// The fewest steps that a tree of these taxa needs. They are often the active ones, for which that
/// is known.
std::int64_t fewest_steps(int character, std::span<const std::uint8_t> taxa) {
  const bool all_active = std::equal(taxa.begin(), taxa.end(), matrix.taxon_active.begin());
  return all_active ? minimum_steps(character) : steps_over_taxa(character, taxa).least;
}

void add_changes(const tree_shape& shape, std::span<const std::uint8_t> taxa, int character,
                 std::vector<apomorphy>& changes) {
  const mapped_character mapped = map_character(shape, character);
  if (mapped.steps == 0) return;
  const bool homoplastic = mapped.steps > fewest_steps(character, taxa);
  const bool directed = tells_direction(character);
  for (const int node : shape.inner)
    for (const int d : shape.lists.children(node)) {
      const node_values& from = mapped.at_nodes[at(node)];
      const node_values& to = mapped.at_nodes[at(d)];
      if (!from.known() || !to.known() || from.meets(to)) continue;
      if (node == shape.root() && d == matrix.outgroup && !directed) continue;
      changes.push_back({d, character, from, to, homoplastic});
    }
}

}  // namespace

std::vector<apomorphy> find_apomorphies(const tree_shape& shape,
                                        const std::vector<int>& characters) {
  std::vector<apomorphy> changes;
  const std::vector<std::uint8_t> taxa = taxa_of(shape);
  for (const int c : characters) {
    check_interrupt();
    add_changes(shape, taxa, c, changes);
  }
  std::stable_sort(changes.begin(), changes.end(),
                   [](const apomorphy& a, const apomorphy& b) { return a.node < b.node; });
  return changes;
}

std::vector<apomorphy> common_apomorphies(const common_groups& common,
                                          std::span<const std::vector<apomorphy>> changes) {
  struct tally {
    std::size_t trees = 0;
    apomorphy change;
  };
  std::map<std::pair<int, int>, tally> found;  // by node of the consensus, then character
  for (std::size_t t = 0; t < changes.size(); ++t) {
    std::map<int, int> consensus_node;
    for (int v = 0; at(v) < common.nodes[t].size(); ++v)
      if (common.nodes[t][at(v)] >= 0) consensus_node[common.nodes[t][at(v)]] = v;
    for (const apomorphy& change : changes[t]) {
      const auto node = consensus_node.find(change.node);
      if (node == consensus_node.end()) continue;
      tally& sum = found[{node->second, change.character}];
      if (sum.trees == 0) sum.change = {node->second, change.character, {}, {}, false};
      ++sum.trees;
      sum.change.from.join(change.from);
      sum.change.to.join(change.to);
      sum.change.homoplastic = sum.change.homoplastic || change.homoplastic;
    }
  }
  std::vector<apomorphy> in_all;
  for (const auto& [place, sum] : found)
    if (sum.trees == changes.size()) in_all.push_back(sum.change);
  return in_all;
}

std::string change_text(const apomorphy& change, const char* arrow) {
  const auto side = [&](const node_values& values) {
    return values_text(change.character, values) + (values.ambiguous() ? "?" : "");
  };
  return side(change.from) + arrow + side(change.to);
}

}  // namespace zeb
