// Trees as landmarks are optimised on them, and what of a tree matters to one point.
#pragma once

#include <span>
#include <vector>

#include "matrix/landmark_points.h"
#include "trees/tree_record.h"

namespace zeb {

/// A rooted tree: terminals 0 to `terminals` - 1, other nodes in any order. Polytomies are allowed.
struct landmark_tree {
  int terminals = 0;
  int root = 0;
  std::vector<int> ancestor;  // by node; -1: the root, and what isn't in the tree
  std::vector<int> order;     // the nodes, each after its ancestor
  int nodes() const { return static_cast<int>(ancestor.size()); }
  bool holds(int node) const {
    return node == root || ancestor[static_cast<std::size_t>(node)] >= 0;
  }
};
landmark_tree landmark_tree_of(std::vector<int> ancestors, int terminals, int root);
/// A tree of the buffer.
landmark_tree landmark_tree_of(const_tree_span tree, int ntax);
/// Error where the base isn't split in two.
void require_basal_dichotomy(const_tree_span tree, int ntax);

/// What is left of a tree where a point is missing in some terminals: the terminals that have it
/// and the nodes where lineages that lead to them meet. The base carries no length, so its two
/// lineages are one branch: every inner node has at least three neighbours.
struct point_tree {
  static constexpr int none = -1;
  std::vector<int> node;         // of each vertex: node of the whole tree, ancestors first
  std::vector<int> ancestor;     // by vertex; none: the first one
  std::vector<int> first_child;  // by vertex, and one more: places in `children`
  std::vector<int> children;     // vertices
  int top = none;                // node of the whole tree where all lineages meet

  int size() const { return static_cast<int>(node.size()); }
  std::span<const int> children_of(int v) const {
    const auto i = static_cast<std::size_t>(v);
    return std::span(children).subspan(
        static_cast<std::size_t>(first_child[i]),
        static_cast<std::size_t>(first_child[i + 1] - first_child[i]));
  }
};
/// For a point with these positions of terminals.
point_tree tree_of_point(const landmark_tree& tree, std::span<const landmark_point> terminals);

/// Gives positions to all nodes of the whole tree, from those of the vertices: a node with a single
/// lineage lies halfway between its neighbours, the base at one of its descendants, what is above
/// the place where all lineages meet there; nodes without the point are missing. `positions`: by
/// node.
void fill_positions(const landmark_tree& tree, const point_tree& vertices,
                    std::span<const landmark_point> of_vertices,
                    std::span<landmark_point> positions);
/// The sum of the lengths of all branches, for positions by vertex.
double length_of(const point_tree& tree, std::span<const landmark_point> positions);

}  // namespace zeb
