// Places in packed trees, for tests that clip and join.
#pragma once

#include <algorithm>
#include <random>
#include <vector>

#include "engine/search_data.h"
#include "property/random_matrix.h"

namespace zeb_test {

/// The node and all below it, increasing.
inline std::vector<int> nodes_below(const zeb::search_data& data, int top) {
  const auto at = [](int i) { return static_cast<std::size_t>(i); };
  std::vector<int> nodes = {top};
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (nodes[i] < data.n) continue;
    nodes.push_back(data.tree.first[at(nodes[i])]);
    nodes.push_back(data.tree.second[at(nodes[i])]);
  }
  std::sort(nodes.begin(), nodes.end());
  return nodes;
}

/// A node to clip: not the root or the outgroup, and not below the root, so that a branch is left.
inline int draw_clip(const zeb::search_data& data, std::mt19937& g) {
  int clip = 0;
  do clip = draw(g, 1, data.nodes - 1);
  while (clip == data.n || data.tree.anc[static_cast<std::size_t>(clip)] == data.n);
  return clip;
}

}  // namespace zeb_test
