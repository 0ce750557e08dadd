#include "compatibility/clique_trees.h"

#include <algorithm>

#include "base/indices.h"
#include "engine/plain/plain_optimisation.h"
#include "matrix/character_steps.h"
#include "matrix/matrix.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

/// The tree with the group's branch put in at a node whose every branch has taxa of the group only,
/// or of the rest only, or neither; unchanged where there is no such node. Taxa are of the group
/// (1), of the rest (0) or neither (-1).
class group_inserter {
 public:
  group_inserter(std::vector<tree_node>& tree, const std::vector<int>& side)
      : tree_(tree),
        lists_(descendants_of(tree, matrix.ntax)),
        inside_(lists_.nodes(), 0),
        outside_(lists_.nodes(), 0) {
    for (int t = 0; t < matrix.ntax; ++t) {
      inside_[at(t)] = side[at(t)] == 1;
      outside_[at(t)] = side[at(t)] == 0;
    }
    const std::vector<int> outward = internal_nodes_root_first(lists_, matrix.ntax);
    for (auto v = outward.rbegin(); v != outward.rend(); ++v)
      for (const int child : lists_.children(*v)) {
        inside_[at(*v)] += inside_[at(child)];
        outside_[at(*v)] += outside_[at(child)];
      }
    const auto node = std::ranges::find_if(outward, [this](int v) { return fits(v); });
    if (node != outward.end()) insert(*node);
  }

 private:
  int all_inside() const { return inside_[at(matrix.ntax)]; }
  int all_outside() const { return outside_[at(matrix.ntax)]; }

  bool fits(int node) const {
    const int in_rest = all_inside() - inside_[at(node)];
    const int out_rest = all_outside() - outside_[at(node)];
    if (in_rest > 0 && out_rest > 0) return false;
    for (const int child : lists_.children(node))
      if (inside_[at(child)] > 0 && outside_[at(child)] > 0) return false;
    return true;
  }

  /// Joins the branches of one side above the node: those of the group, or, where some of the group
  /// are not above it, those of the rest.
  void insert(int node) {
    const bool group_above = all_inside() == inside_[at(node)];
    std::vector<int> joined;
    int others = node == matrix.ntax ? 0 : 1;
    for (const int child : lists_.children(node)) {
      if ((group_above ? inside_ : outside_)[at(child)] > 0)
        joined.push_back(child);
      else
        ++others;
    }
    if (joined.size() < 2 || others < (node == matrix.ntax ? 1 : 2)) return;  // is there already
    const int fresh = node_limit(tree_, matrix.ntax);
    for (const int child : joined) tree_[at(child)] = fresh;
    tree_[at(fresh)] = node;
    tree_[at(matrix.ntax)] = fresh + 1;
    normalise_tree(tree_, matrix.ntax);
  }

  std::vector<tree_node>& tree_;
  descendant_lists lists_;
  std::vector<int> inside_, outside_;  // taxa by node
};

/// A class of a partition against the other classes.
struct class_side {
  const taxon_partition* partition = nullptr;
  int chosen = 0;
  int known = 0;  // taxa that the partition says something of
};

std::vector<int> sides(const class_side& of) {
  std::vector<int> out;
  for (const int c : of.partition->class_of) out.push_back(c < 0 ? -1 : c == of.chosen);
  return out;
}

std::vector<tree_node> bush_of_active_taxa() {
  std::vector<tree_node> tree(at(matrix.nnodes), 0);
  for (int t = 0; t < matrix.ntax; ++t)
    if (matrix.taxon_active[at(t)]) tree[at(t)] = matrix.ntax;
  tree[at(matrix.ntax)] = matrix.ntax + 1;
  return tree;
}

std::vector<class_side> sides_of(const compatibility_graph& graph, const taxon_set& patterns) {
  std::vector<class_side> out;
  for (const int p : patterns)
    for (const taxon_partition& one : graph.patterns[at(p)].partitions) {
      const auto known =
          static_cast<int>(std::ranges::count_if(one.class_of, [](int c) { return c >= 0; }));
      for (int c = one.classes == 2 ? 1 : 0; c < one.classes; ++c) out.push_back({&one, c, known});
    }
  // Those of two classes first: they are sure to be branches.
  std::ranges::stable_sort(out, [](const class_side& a, const class_side& b) {
    const bool split_a = a.partition->classes == 2;
    const bool split_b = b.partition->classes == 2;
    return split_a != split_b ? split_a : a.known > b.known;
  });
  return out;
}

}  // namespace

clique_tree tree_of_characters(const compatibility_graph& graph, const taxon_set& patterns) {
  clique_tree out{bush_of_active_taxa(), {}};
  for (const class_side& one : sides_of(graph, patterns)) group_inserter(out.tree, sides(one));
  reroot_tree(out.tree, matrix.ntax, matrix.outgroup);
  std::vector<std::uint8_t> marked(at(matrix.nchar), 0);
  for (const int p : patterns)
    for (const int c : graph.patterns[at(p)].characters) marked[at(c)] = 1;
  plain_optimiser optimiser(marked);
  optimiser.optimise(out.tree, polytomy_kind::hard);
  for (int c = 0; c < matrix.nchar; ++c)
    if (marked[at(c)] && optimiser.steps(c) > minimum_steps(c)) out.in_doubt.push_back(c);
  return out;
}

}  // namespace zeb
