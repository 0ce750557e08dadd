// Lengths of trees over points in space, and the positions of inner nodes that make them short, for
// one block of points at a time. Blocks don't share anything, so threads may have one each.
//
// The length of a tree of given shape is a convex function of the positions of its inner nodes.
// Here it is made small by least squares with weights made anew in each round (Weiszfeld 1937): the
// sum of squares of the branches, each divided by the length that the branch has at present, has
// its least value where a system of equations says, and on a tree that is solved by one walk from
// the terminals to the base and one back. Branches next to nothing get the weight of a short one,
// `floor`, so that nodes that coincide can move together, and part again. Coordinate descent, one
// Fermat point after the other, needs several times as many rounds, and sticks where two nodes
// coincide.
#pragma once

#include <span>

#include "landmarks/point_blocks.h"

namespace zeb {

/// The inner nodes of a tree or a part of one, each before those that hang from it. Where a part is
/// walked that has other nodes around it, `moves` marks those that may move, by node; empty: all.
struct node_walk {
  tree_links links;
  tree_base base;
  std::span<const std::int32_t> inner;
  std::span<const std::uint8_t> moves = {};
};

/// How positions are relaxed: so many rounds, with branches shorter than `floor` times the point's
/// span taken for that long; the floor goes down geometrically from the first to the last.
struct relaxation {
  int rounds = 0;
  double first_floor = 0;
  double last_floor = 0;
  bool from_nothing = false;  // begins with weights of 1: positions there are don't count
};

/// Moves the inner nodes of the walk. Nodes that no present terminal calls for get the place of the
/// nearest one that has any.
void relax_positions(const point_blocks& points, int block, const node_walk& walk,
                     const relaxation& how, node_positions& positions);
/// The length of each lane's tree. `of_branches`, if given, gets the lengths of all branches of the
/// walk, by the node at their lower end (at the base, both) and lane.
lane_values lengths_of(const point_blocks& points, int block, const node_walk& walk,
                       const node_positions& positions, double* of_branches = nullptr);

}  // namespace zeb
