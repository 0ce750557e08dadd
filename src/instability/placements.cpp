#include "instability/placements.h"

#include <algorithm>
#include <cstdint>
#include <map>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/scores.h"
#include "engine/plain/plain_optimisation.h"
#include "matrix/matrix.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

std::vector<std::uint8_t> flags_of(const taxon_set& set, int ntax) {
  std::vector<std::uint8_t> flags(at(ntax), 0);
  for (const int t : set) flags[at(t)] = 1;
  return flags;
}

taxon_set terminals_of(const_tree_span tree, int node, int ntax) {
  std::vector<std::uint8_t> flags(at(ntax), 0);
  flag_terminals(tree, ntax, node, flags);
  return taxon_set::of_flags(flags);
}

/// The node of the smallest clade that holds all taxa of the set that the tree has; -1 for none.
int smallest_clade(const_tree_span tree, const taxon_set& set, int ntax) {
  int node = -1;
  for (const int t : set) {
    if (is_absent(tree, t)) continue;
    if (node < 0) node = t;
    while (node != ntax && !descends_from(tree, ntax, t, node)) node = tree[at(node)];
  }
  return node;
}

/// What a tree says of the clade: its sister, or the others of its polytomy.
struct place {
  taxon_set sister;
  bool in_polytomy = false;
};

place place_in(const_tree_span tree, const taxon_set& clade, int ntax) {
  const int node = smallest_clade(tree, clade, ntax);
  if (node < 0 || node == ntax) return {taxon_set(ntax), false};
  const int above = tree[at(node)];
  return {terminals_of(tree, above, ntax) - clade, descendants_of(tree, ntax).count[at(above)] > 2};
}

std::vector<tree_node> moved(std::vector<tree_node> tree, const taxon_set& clade, const place& to,
                             int ntax) {
  const int node = smallest_clade(tree, clade, ntax);
  const int target = smallest_clade(tree, to.sister, ntax);
  move_clade(tree, ntax, node, target, target >= ntax && to.in_polytomy);
  return tree;
}

}  // namespace

std::vector<placement> placements_of(const compared_copies& copies, const taxon_set& clade,
                                     const taxon_set& pruned, int ntax) {
  const std::vector<std::uint8_t> cut = flags_of(pruned - clade, ntax);
  std::vector<tree_node> base;
  std::vector<placement> out;
  std::map<std::vector<tree_node>, std::size_t> numbers;
  for (std::vector<tree_node> tree : copies.trees()) {
    check_interrupt();
    delete_taxa(tree, ntax, cut);
    const place there = place_in(tree, clade, ntax);
    if (there.sister.empty()) continue;  // the tree lacks the clade, or all others
    if (base.empty()) base = tree;
    if (smallest_clade(base, there.sister, ntax) < 0) continue;
    const auto [found, is_new] = numbers.try_emplace(moved(base, clade, there, ntax), out.size());
    if (is_new) out.push_back({found->first, there.sister, 0});
    ++out[found->second].count;
  }
  std::ranges::stable_sort(out, std::ranges::greater(), &placement::count);
  return out;
}

double deciding_character::range() const {
  const auto [least, most] = std::ranges::minmax_element(steps);
  return (*most - *least) * matrix.characters[at(character)].weight;
}

std::vector<deciding_character> deciding_characters(const std::vector<placement>& places) {
  const std::vector<std::uint8_t> scored = scored_characters();
  plain_optimiser optimiser(scored);
  std::vector<std::vector<double>> steps(scored.size());
  for (const placement& one : places) {
    check_interrupt();
    optimiser.optimise(one.tree, polytomy_kind::hard);
    for (std::size_t c = 0; c < scored.size(); ++c)
      if (scored[c]) steps[c].push_back(optimiser.length(static_cast<int>(c)));
  }
  std::vector<deciding_character> out;
  for (std::size_t c = 0; c < scored.size(); ++c) {
    deciding_character one{static_cast<int>(c), std::move(steps[c])};
    if (scored[c] && one.range() > score_tolerance) out.push_back(std::move(one));
  }
  std::ranges::stable_sort(out, std::ranges::greater(), &deciding_character::range);
  return out;
}

}  // namespace zeb
