#include "landmarks/landmark_tree.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "landmarks/fermat.h"

namespace zeb {
namespace {

constexpr int none = point_tree::none;

/// By node: the terminal or meeting of lineages that stands for its clade; none without the point.
std::vector<int> representatives(const landmark_tree& tree,
                                 std::span<const landmark_point> terminals) {
  std::vector<int> lineage(at(tree.nodes()), none);
  for (std::size_t i = tree.order.size(); i-- > 0;) {
    const int v = tree.order[i];
    if (v < tree.terminals && !is_missing(terminals[at(v)])) lineage[at(v)] = v;
    const int ancestor = tree.ancestor[at(v)];
    if (ancestor < 0 || lineage[at(v)] == none) continue;
    int& above = lineage[at(ancestor)];
    above = above == none ? lineage[at(v)] : ancestor;
  }
  return lineage;
}

class vertex_finder {
 public:
  vertex_finder(const landmark_tree& tree, std::span<const landmark_point> terminals)
      : tree_(tree), lineage_(representatives(tree, terminals)), vertex_(at(tree.nodes()), none) {}

  point_tree find() {
    result_.top = lineage_[at(tree_.root)];
    if (result_.top == none) return std::move(result_);
    const auto [first, second] = ends_of_base();
    if (first != none) add(first, none);
    for (const int v : tree_.order) {
      if (lineage_[at(v)] != v || v == first || (v == result_.top && first != none)) continue;
      add(v, v == second ? vertex_[at(first)] : vertex_above(v));
    }
    list_children();
    return std::move(result_);
  }

 private:
  void add(int node, int ancestor) {
    vertex_[at(node)] = result_.size();
    result_.node.push_back(node);
    result_.ancestor.push_back(ancestor);
  }
  int vertex_above(int node) const {
    int v = tree_.ancestor[at(node)];
    while (v >= 0 && vertex_[at(v)] == none) v = tree_.ancestor[at(v)];
    return v < 0 ? none : vertex_[at(v)];
  }
  /// The two lineages that meet at the top, an inner node first, where there are just two.
  std::pair<int, int> ends_of_base() const {
    std::vector<int> found;
    for (const int v : tree_.order) {
      if (tree_.ancestor[at(v)] == result_.top && lineage_[at(v)] != none)
        found.push_back(lineage_[at(v)]);
    }
    if (found.size() != 2) return {none, none};
    if (found[0] < tree_.terminals) std::swap(found[0], found[1]);
    return {found[0], found[1]};
  }
  void list_children() {
    const auto size = at(result_.size());
    result_.first_child.assign(size + 1, 0);
    for (const int a : result_.ancestor) {
      if (a != none) ++result_.first_child[at(a) + 1];
    }
    for (std::size_t v = 0; v < size; ++v) result_.first_child[v + 1] += result_.first_child[v];
    result_.children.resize(size > 0 ? size - 1 : 0);
    std::vector<int> next = result_.first_child;
    for (std::size_t v = 0; v < size; ++v) {
      const int a = result_.ancestor[v];
      if (a != none) result_.children[at(next[at(a)]++)] = static_cast<int>(v);
    }
  }

  const landmark_tree& tree_;
  std::vector<int> lineage_;
  std::vector<int> vertex_;  // by node of the whole tree; none: it isn't one
  point_tree result_;
};

landmark_point midpoint(const landmark_point& a, const landmark_point& b) {
  return {(a.x + b.x) / 2, (a.y + b.y) / 2, (a.z + b.z) / 2};
}

}  // namespace

landmark_tree landmark_tree_of(std::vector<int> ancestors, int terminals, int root) {
  landmark_tree tree{terminals, root, std::move(ancestors), {}};
  const auto nodes = at(tree.nodes());
  tree.ancestor[at(root)] = -1;
  std::vector<int> first(nodes, -1);
  std::vector<int> next(nodes, -1);
  for (std::size_t v = nodes; v-- > 0;) {
    if (tree.ancestor[v] < 0) continue;
    next[v] = first[at(tree.ancestor[v])];
    first[at(tree.ancestor[v])] = static_cast<int>(v);
  }
  tree.order.push_back(root);
  for (std::size_t i = 0; i < tree.order.size(); ++i) {
    for (int v = first[at(tree.order[i])]; v >= 0; v = next[at(v)]) tree.order.push_back(v);
  }
  return tree;
}

landmark_tree landmark_tree_of(const_tree_span tree, int ntax) {
  std::vector<int> ancestors(at(node_limit(tree, ntax)), -1);
  for (int v = 0; v < static_cast<int>(ancestors.size()); ++v) {
    if (v != ntax && tree[at(v)] > 0) ancestors[at(v)] = tree[at(v)];
  }
  return landmark_tree_of(std::move(ancestors), ntax, ntax);
}

void require_basal_dichotomy(const_tree_span tree, int ntax) {
  int branches = 0;
  for (int v = 0; v < node_limit(tree, ntax); ++v) branches += v != ntax && tree[at(v)] == ntax;
  if (branches != 2) error_end("To optimize landmarks, trees must have a basal dichotomy");
}

point_tree tree_of_point(const landmark_tree& tree, std::span<const landmark_point> terminals) {
  return vertex_finder(tree, terminals).find();
}

void fill_positions(const landmark_tree& tree, const point_tree& vertices,
                    std::span<const landmark_point> of_vertices,
                    std::span<landmark_point> positions) {
  std::ranges::fill(positions, missing_point);
  if (vertices.size() == 0) return;
  for (std::size_t i = 0; i < vertices.node.size(); ++i)
    positions[at(vertices.node[i])] = of_vertices[i];
  if (is_missing(positions[at(vertices.top)])) positions[at(vertices.top)] = of_vertices[0];
  // By node, from below: the position of what stands for its clade.
  std::vector<landmark_point> below(positions.begin(), positions.end());
  for (std::size_t i = tree.order.size(); i-- > 1;) {
    const int v = tree.order[i];
    landmark_point& above = below[at(tree.ancestor[at(v)])];
    if (is_missing(above)) above = below[at(v)];
  }
  bool inside = false;
  std::vector<std::uint8_t> under_top(at(tree.nodes()), 0);
  for (const int v : tree.order) {
    const int ancestor = tree.ancestor[at(v)];
    inside = v == vertices.top || (ancestor >= 0 && under_top[at(ancestor)]);
    under_top[at(v)] = inside;
    if (!is_missing(positions[at(v)]) || is_missing(below[at(v)])) continue;
    positions[at(v)] = inside ? midpoint(positions[at(ancestor)], below[at(v)]) : below[at(v)];
  }
}

double length_of(const point_tree& tree, std::span<const landmark_point> positions) {
  double sum = 0;
  for (std::size_t v = 1; v < tree.node.size(); ++v) {
    sum += distance(positions[v], positions[at(tree.ancestor[v])]);
  }
  return sum;
}

}  // namespace zeb
