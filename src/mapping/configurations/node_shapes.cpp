#include "mapping/configurations/node_shapes.h"

#include <numeric>

#include "base/indices.h"
#include "landmarks/fermat.h"
#include "landmarks/landmark_scores.h"
#include "matrix/landmarks.h"

namespace zeb {

double node_shapes::length() const { return std::accumulate(changes.begin(), changes.end(), 0.0); }

double distance_of_shapes(const std::vector<landmark_point>& a,
                          const std::vector<landmark_point>& b) {
  double sum = 0;
  for (std::size_t p = 0; p < a.size() && p < b.size(); ++p)
    if (!is_missing(a[p]) && !is_missing(b[p])) sum += distance(a[p], b[p]);
  return sum;
}

node_shapes shapes_on_tree(const tree_shape& tree, int character) {
  const landmark_configuration& configuration = *configuration_of(character);
  node_shapes found;
  found.character = character;
  found.dimensions = configuration.dimensions;
  found.shapes.resize(tree.nodes());
  found.changes.assign(tree.nodes(), 0);
  const auto places = positions_of_configuration(tree.tree, character);
  for (int v = 0; at(v) < tree.nodes(); ++v) {
    if (!tree.has(v)) continue;
    for (const auto& of_nodes : places) found.shapes[at(v)].push_back(of_nodes[at(v)]);
  }
  for (int v = 0; at(v) < tree.nodes(); ++v)
    if (tree.has(v) && v != tree.root())
      found.changes[at(v)] =
          distance_of_shapes(found.shapes[at(v)], found.shapes[at(tree.ancestor(v))]);
  return found;
}

}  // namespace zeb
