// Points of landmark characters side by side, as searches work on them: `block_lanes` points at a
// time, so that one walk over a tree serves all of a block, in vectors.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "base/indices.h"

namespace zeb {

constexpr int block_lanes = 8;
using lane_values = std::array<double, block_lanes>;

/// Points of one number of dimensions. Lanes without a point have weight 0 and lie at one place.
struct point_block {
  int dimensions = 2;
  std::size_t begin = 0;  // of its coordinates, in units of values per node
  lane_values span{};     // largest extent of the point, above 0
  bool has_missing = false;
};

/// All points of a search. Coordinates of a node lie together: x of all lanes, then y, then z.
struct point_blocks {
  int terminals = 0;
  std::vector<point_block> blocks;
  std::vector<double> coordinates;       // of terminals: block, terminal, dimension, lane
  std::vector<std::uint8_t> is_present;  // block, terminal: a bit a lane
  std::size_t values_per_node = 0;       // over all blocks

  int count() const { return static_cast<int>(blocks.size()); }
  std::uint8_t present(int block, int terminal) const {
    return is_present[at(block) * at(terminals) + at(terminal)];
  }
};

struct point_record;
/// Adds a block of these points, at most `block_lanes`, of one number of dimensions. Terminal i of
/// the search is terminal `terminals[i]` of the points.
void add_block(point_blocks& blocks, std::span<const point_record* const> points, int dimensions,
               std::span<const std::int32_t> terminals);

/// A tree, or a part of one, by its base: a branch between two nodes, from where all others hang.
/// Nothing but `first` is there where it is one node.
struct tree_base {
  int first = -1;
  int second = -1;
};

/// The links of a binary tree: numbers below `terminals` are terminals.
struct tree_links {
  int terminals = 0;
  const std::int32_t* anc = nullptr;
  const std::int32_t* first = nullptr;
  const std::int32_t* second = nullptr;
};

/// Where all points of all nodes of a tree are.
class node_positions {
 public:
  node_positions() = default;
  /// Terminals get their places, other nodes none.
  node_positions(const point_blocks& points, int nodes);
  double* of(const point_block& block, int node) { return values_.data() + place(block, node); }
  const double* of(const point_block& block, int node) const {
    return values_.data() + place(block, node);
  }
  int nodes() const { return nodes_; }

 private:
  std::size_t place(const point_block& block, int node) const {
    return block.begin * at(nodes_) + at(node) * at(block.dimensions) * block_lanes;
  }
  int nodes_ = 0;
  std::vector<double> values_;
};

}  // namespace zeb
