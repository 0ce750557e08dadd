#include "landmarks/tree_springs.h"

#include <cmath>

#include "base/indices.h"
#include "landmarks/fermat.h"

namespace zeb {
namespace {

landmark_point weighted_mean(const landmark_point& a, double f, const landmark_point& b, double g) {
  const double share = g / (f + g);
  return {a.x + (b.x - a.x) * share, a.y + (b.y - a.y) * share, a.z + (b.z - a.z) * share};
}

}  // namespace

// Springs in series and parallel: what a clade pulls at its ancestor with is one number and one
// place, so that the linear equations of all nodes are solved by going down and up once. Nothing is
// subtracted, so springs of any strength are safe beside each other.
void tree_springs::sweep(const point_tree& tree, int terminals, double softness,
                         std::span<landmark_point> positions) {
  const std::size_t size = tree.node.size();
  hold_.assign(size, 0);
  held_at_.assign(size, landmark_point{});
  strength_.resize(size);
  const double square = softness * softness;
  for (std::size_t v = size; v-- > 1;) {
    const std::size_t a = at(tree.ancestor[v]);
    strength_[v] = 1 / std::sqrt(squared_distance(positions[v], positions[a]) + square);
    const bool is_terminal = tree.node[v] < terminals;
    if (is_terminal) held_at_[v] = positions[v];
    const double pull =
        is_terminal ? strength_[v] : strength_[v] * hold_[v] / (strength_[v] + hold_[v]);
    held_at_[a] =
        hold_[a] == 0 ? held_at_[v] : weighted_mean(held_at_[a], hold_[a], held_at_[v], pull);
    hold_[a] += pull;
  }
  if (tree.node[0] >= terminals) positions[0] = held_at_[0];
  for (std::size_t v = 1; v < size; ++v) {
    if (tree.node[v] < terminals) continue;
    positions[v] =
        weighted_mean(held_at_[v], hold_[v], positions[at(tree.ancestor[v])], strength_[v]);
  }
}

}  // namespace zeb
