#include "search/moves/piece_exchange.h"

#include <algorithm>

#include "base/indices.h"
#include "engine/passes/passes.h"
#include "search/moves/tree_in_pieces.h"
#include "search/moves/walked_tree.h"

namespace zeb {
namespace {

void hang(tree_arrays& tree, int above, int a, int b) {
  tree.first[at(above)] = a;
  tree.second[at(above)] = b;
  tree.anc[at(a)] = tree.anc[at(b)] = above;
  tree.sister[at(a)] = b;
  tree.sister[at(b)] = a;
}

/// Copies a tree's arrangement of some terminals into links, but for terminal 0. Internal nodes are
/// taken from `next_free` on. Returns the highest node.
int copy_arrangement(std::span<const std::int32_t> from, int n,
                     const std::vector<std::uint8_t>& is_in, bool wanted, tree_arrays& tree,
                     int* next_free) {
  const walked_tree walk(from, n);
  std::vector<std::int32_t> became(from.size(), -1);
  for (auto i = walk.preorder.rbegin(); i != walk.preorder.rend(); ++i) {
    const std::size_t v = at(*i);
    if (*i < n) {
      if ((is_in[v] != 0) == wanted) became[v] = *i;
      continue;
    }
    const int a = became[at(walk.first[v])];
    const int b = became[at(walk.second[v])];
    became[v] = std::max(a, b);
    if (a < 0 || b < 0) continue;
    became[v] = (*next_free)++;
    hang(tree, became[v], a, b);
  }
  return became[at(walk.preorder.front())];
}

}  // namespace

shared_piece piece_shared_at(std::span<const std::int32_t> target, int node,
                             std::span<const std::int32_t> source, int n) {
  shared_piece piece;
  std::vector<std::uint8_t> in_target(at(n), 0);
  const std::vector<std::int32_t> members = walked_tree(target, n).terminals_of(node, n);
  for (const std::int32_t t : members) in_target[at(t)] = 1;
  const int target_size = static_cast<int>(members.size());
  const walked_tree walk(source, n);
  struct content {
    int size, shared;
  };
  std::vector<content> contents(source.size());
  int best = -1;
  int fewest = n;
  for (auto i = walk.preorder.rbegin(); i != walk.preorder.rend(); ++i) {
    content& c = contents[at(*i)];
    if (*i < n) {
      c = {1, in_target[at(*i)]};
      continue;
    }
    const content& a = contents[at(walk.first[at(*i)])];
    const content& b = contents[at(walk.second[at(*i)])];
    c = {a.size + b.size, a.shared + b.shared};
    const int apart = c.size + target_size - 2 * c.shared;
    if (apart >= fewest) continue;
    fewest = apart;
    best = *i;
  }
  piece.is_in.assign(at(n), 0);
  if (best < 0) return piece;
  piece.shared = contents[at(best)].shared;
  piece.unshared_target = target_size - piece.shared;
  piece.unshared_source = contents[at(best)].size - piece.shared;
  for (const std::int32_t t : walk.terminals_of(best, n)) piece.is_in[at(t)] = in_target[at(t)];
  return piece;
}

bool can_be_exchanged(const shared_piece& piece, int n) {
  constexpr int fewest = 3;
  return piece.shared >= fewest && n - piece.shared >= fewest;
}

double take_piece_over(search_context& context, std::span<const std::int32_t> target,
                       std::span<const std::int32_t> source, const shared_piece& piece,
                       std::span<std::int32_t> hybrid) {
  search_data& data = context.data;
  int next_free = data.n + 1;
  const int main = copy_arrangement(target, data.n, piece.is_in, false, data.tree, &next_free);
  hang(data.tree, data.n, 0, main);
  const int top = copy_arrangement(source, data.n, piece.is_in, true, data.tree, &next_free);
  data.tree.anc[at(top)] = next_free;
  tree_in_pieces forest(context, std::vector<tree_piece>{{top, next_free, piece.shared}});
  forest.make_sets();
  forest.join_all(hybrid);
  return tree_length(data, hybrid);
}

}  // namespace zeb
