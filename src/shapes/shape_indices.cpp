#include "shapes/shape_indices.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

#include "base/indices.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

/// What the indices are summed up from, by node.
struct measured_tree {
  measured_tree(const_tree_span tree, int ntax)
      : root(ntax),
        lists(descendants_of(tree, ntax)),
        outward(internal_nodes_root_first(lists, ntax)),
        terminals(lists.nodes(), 0),
        depth(lists.nodes(), 0),
        height(lists.nodes(), 0) {
    for (int t = 0; t < ntax; ++t)
      if (!is_absent(tree, t)) terminals[at(t)] = 1;
    for (const int v : outward)
      for (const int child : lists.children(v)) depth[at(child)] = depth[at(v)] + 1;
    for (auto v = outward.rbegin(); v != outward.rend(); ++v)
      for (const int child : lists.children(*v)) {
        terminals[at(*v)] += terminals[at(child)];
        height[at(*v)] = std::max(height[at(*v)], height[at(child)] + 1);
      }
  }

  int root;
  descendant_lists lists;
  std::vector<int> outward;
  std::vector<int> terminals, depth, height;
};

std::optional<double> colless(const measured_tree& tree) {
  double sum = 0;
  for (const int v : tree.outward) {
    if (tree.lists.count[at(v)] != 2) return {};
    const int a = tree.lists.first[at(v)];
    const int b = tree.lists.sibling[at(a)];
    sum += std::abs(tree.terminals[at(a)] - tree.terminals[at(b)]);
  }
  return sum;
}

double cophenetic(const measured_tree& tree) {
  double sum = 0;
  for (const int v : tree.outward) {
    const double n = tree.terminals[at(v)];
    if (v != tree.root) sum += n * (n - 1) / 2;
  }
  return sum;
}

double b1(const measured_tree& tree) {
  double sum = 0;
  for (const int v : tree.outward)
    if (v != tree.root) sum += 1.0 / tree.height[at(v)];
  return sum;
}

double cherries(const measured_tree& tree) {
  return static_cast<double>(std::ranges::count_if(tree.outward, [&](int v) {
    return tree.lists.count[at(v)] == 2 && tree.height[at(v)] == 1;
  }));
}

}  // namespace

shape_values indices_of(const_tree_span record, int ntax) {
  const measured_tree tree(record, ntax);
  shape_values values;
  const auto set = [&](shape_index index, std::optional<double> value) {
    values[static_cast<std::size_t>(index)] = value;
  };
  const double n = tree.terminals[at(ntax)];
  if (n < 1) return values;
  double sum = 0;
  double squares = 0;
  for (int t = 0; t < ntax; ++t) {
    if (tree.terminals[at(t)] == 0) continue;
    sum += tree.depth[at(t)];
    squares += static_cast<double>(tree.depth[at(t)]) * tree.depth[at(t)];
  }
  set(shape_index::colless, colless(tree));
  set(shape_index::sackin, sum);
  set(shape_index::cophenetic, cophenetic(tree));
  set(shape_index::b1, b1(tree));
  set(shape_index::cherries, cherries(tree));
  set(shape_index::depth, tree.height[at(ntax)]);
  set(shape_index::variance, squares / n - sum / n * (sum / n));
  return values;
}

int shape_classes::number_of(std::vector<int> descendants) {
  std::ranges::sort(descendants);
  const auto [place, is_new] =
      numbers_.try_emplace(std::move(descendants), static_cast<int>(numbers_.size()) + 1);
  return place->second;
}

int shape_classes::class_of(const_tree_span record, int ntax) {
  const descendant_lists lists = descendants_of(record, ntax);
  const std::vector<int> outward = internal_nodes_root_first(lists, ntax);
  std::vector<int> number(lists.nodes(), 0);
  for (auto v = outward.rbegin(); v != outward.rend(); ++v) {
    std::vector<int> below;
    for (const int child : lists.children(*v)) below.push_back(number[at(child)]);
    number[at(*v)] = number_of(std::move(below));
  }
  const auto [place, is_new] = classes_.try_emplace(number[at(ntax)], count());
  return place->second;
}

std::string shape_text(const_tree_span record, int ntax) {
  const measured_tree tree(record, ntax);
  constexpr int closing = -1;
  std::string text;
  std::vector<int> waiting{ntax};
  while (!waiting.empty()) {
    const int node = waiting.back();
    waiting.pop_back();
    if (node == closing) {
      text += ')';
    } else if (node < ntax) {
      text += 'o';
    } else {
      text += '(';
      waiting.push_back(closing);
      const auto from = static_cast<std::ptrdiff_t>(waiting.size());
      for (const int child : tree.lists.children(node)) waiting.push_back(child);
      // Small ones come first: they are taken off the end.
      std::stable_sort(waiting.begin() + from, waiting.end(),
                       [&](int a, int b) { return tree.terminals[at(a)] > tree.terminals[at(b)]; });
    }
  }
  return text;
}

}  // namespace zeb
