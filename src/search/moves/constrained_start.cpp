#include "search/moves/constrained_start.h"

#include <algorithm>
#include <bit>
#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "base/random.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"

namespace zeb {
namespace {

constexpr int trees_tried = 200'000;  // partial ones; enough for all of 8 taxa

/// Terminals in random order, those that float in fewer groups first.
std::vector<std::int32_t> addition_order(search_context& context) {
  const constraint_rows& rows = context.constraints_in_force->rows();
  const int n = context.data.n;
  std::vector<std::int32_t> order(at(n));
  random_sequence(context.random, n, order, 0, {});
  const auto groups_fixed = [&rows](int terminal) {
    int count = 0;
    for (std::size_t w = 0; w < rows.words; ++w) {
      count += std::popcount(rows.members_of(terminal)[w] | rows.others_of(terminal)[w]);
    }
    return count;
  };
  std::stable_sort(order.begin() + 1, order.end(),
                   [&](int a, int b) { return groups_fixed(a) > groups_fixed(b); });
  return order;
}

void hang(tree_arrays& tree, int ancestor, int left, int right) {
  tree.first[at(ancestor)] = left;
  tree.second[at(ancestor)] = right;
  tree.anc[at(left)] = tree.anc[at(right)] = ancestor;
  tree.sister[at(left)] = right;
  tree.sister[at(right)] = left;
}

}  // namespace

bool find_constrained_tree(search_context& context) {
  search_data& data = context.data;
  const int n = data.n;
  const std::vector<std::int32_t> order = addition_order(context);
  group_tables tables(context.constraints_in_force->rows(), data.nodes);
  hang(data.tree, n, 0, n + 1);
  hang(data.tree, n + 1, order[1], order[2]);
  // By position in the order: the branches that are still to be tried for that taxon.
  std::vector<std::vector<int>> untried(at(n));
  const auto list_places = [&](int position) {
    tables.read_growing_tree(data.tree);
    for (const int v : tables.nodes_read()) {
      if (tables.allows(order[at(position)], v)) untried[at(position)].push_back(v);
    }
  };
  int tried = 0;
  int position = 3;
  if (n > 3) list_places(3);
  while (position < n) {
    if (++tried > trees_tried || interrupted()) return false;
    if (untried[at(position)].empty()) {
      if (--position < 3) return false;
      detach(data.tree, order[at(position)]);
      continue;
    }
    attach(data.tree, order[at(position)], n + position - 1, untried[at(position)].back());
    untried[at(position)].pop_back();
    if (++position < n) list_places(position);
  }
  full_pass(data);
  return true;
}

}  // namespace zeb
