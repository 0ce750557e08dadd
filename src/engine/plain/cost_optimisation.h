// Characters with costs of changes on one tree of the buffer: a cost for each state at each node
// (Sankoff and Rousseau 1975). Polytomies and absent taxa are allowed.
//
// A change that is forbidden costs 32,700 like any other cost, so a tree that can't do without one
// is worse than all that can, and sums don't depend on the order of adding.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/plain/range_optimisation.h"
#include "matrix/costs/character_costs.h"
#include "trees/tree_walks.h"

namespace zeb {

class cost_optimiser {
 public:
  void add_character(int character, std::span<const std::uint8_t> ignored_taxa);
  std::size_t size() const { return characters_.size(); }
  int character(std::size_t i) const { return characters_[i]; }

  /// Down-pass over a tree given by its descendants and its internal nodes, rootward first; with
  /// `with_finals` (hard polytomies only) the final pass too. Soft polytomies are resolved at best
  /// up to 9 descendants; larger ones are taken as hard.
  void optimise(std::span<const int> order, const descendant_lists& lists, polytomy_kind polytomies,
                bool with_finals);
  /// Cost of the last tree, unweighted.
  std::int64_t steps(std::size_t i) const { return steps_[i]; }
  /// States of the matrix, by character: those that cost the subtree of the node least; those of
  /// all shortest reconstructions of the tree.
  std::span<const std::uint32_t> down(int node) const { return row(down_, node); }
  std::span<const std::uint32_t> final(int node) const { return row(final_, node); }

 private:
  std::span<const std::uint32_t> row(const std::vector<std::uint32_t>& sets, int node) const {
    return std::span(sets).subspan(static_cast<std::size_t>(node) * size(), size());
  }
  void pass(std::size_t i, std::span<const int> order, const descendant_lists& lists,
            polytomy_kind polytomies, bool with_finals);
  void fill_terminals(const character_costs& costs);
  void down_node(const character_costs& costs, int node, std::span<const int> below,
                 polytomy_kind polytomies);
  void resolve(const character_costs& costs, int node, std::span<const int> below);
  void final_node(const character_costs& costs, int node, int above);
  std::uint32_t cheapest(const character_costs& costs, const std::vector<std::int64_t>& table,
                         int node) const;

  std::vector<int> characters_;
  std::vector<character_costs> costs_;
  std::vector<std::int64_t> steps_;
  std::vector<std::uint32_t> down_;  // by node, then character
  std::vector<std::uint32_t> final_;
  // Of the character in work, by node, then state: what the subtree costs with that state, what it
  // costs an ancestor with that state, and what the whole tree costs.
  std::vector<std::int64_t> own_cost_;
  std::vector<std::int64_t> cost_above_;
  std::vector<std::int64_t> tree_cost_;
};

}  // namespace zeb
