// Continuous characters on one tree of the buffer: a range of values at each node, as additive
// characters with as many thresholds as there are values (Farris 1970). Polytomies and absent taxa
// are allowed. In thousandths throughout.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "trees/tree_walks.h"

namespace zeb {

/// How a node with more than two descendants is optimised.
enum class polytomy_kind {
  hard,  // all descendants stem from the node at once (Hartigan 1973)
  soft,  // each character resolves the node as suits it best (Maddison 1989)
};

/// Both ends belong to it. A missing cell is the range of all values.
struct value_range {
  std::int32_t low = 0;
  std::int32_t high = 65535;
  bool operator==(const value_range&) const = default;
};

class range_optimiser {
 public:
  /// `cells` by taxon.
  void add_character(int character, std::span<const value_range> cells);
  std::size_t size() const { return characters_.size(); }
  int character(std::size_t i) const { return characters_[i]; }

  /// Down-pass over a tree given by its descendants and its internal nodes, rootward first; with
  /// `with_finals` (hard polytomies only) the final pass too.
  void optimise(std::span<const int> order, const descendant_lists& lists, polytomy_kind polytomies,
                bool with_finals);
  /// Change on the last tree, unweighted.
  std::int64_t steps(std::size_t i) const { return steps_[i]; }
  /// Values that cost the subtree of the node least, by character; those of all shortest
  /// reconstructions of the tree.
  std::span<const value_range> down(int node) const { return row(down_, node); }
  std::span<const value_range> final(int node) const { return row(final_, node); }
  /// Values whose cost for the subtree grows by no more than one for each unit away from `down`.
  std::span<const value_range> reach(int node) const { return row(reach_, node); }

 private:
  std::span<const value_range> row(const std::vector<value_range>& sets, int node) const {
    return std::span(sets).subspan(static_cast<std::size_t>(node) * size(), size());
  }
  void down_node(int node, std::span<const int> below, polytomy_kind polytomies);

  std::vector<int> characters_;
  std::vector<std::vector<value_range>> cells_;  // by character, then taxon
  std::vector<std::int64_t> steps_;
  std::vector<value_range> down_;  // by node, then character
  std::vector<value_range> reach_;
  std::vector<value_range> final_;
};

}  // namespace zeb
