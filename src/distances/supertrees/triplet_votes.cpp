#include "distances/supertrees/triplet_votes.h"

#include "base/indices.h"
#include "distances/cut_trees.h"

namespace zeb {
namespace {

/// By pair of terminals, how far their common node is from the root.
std::vector<int> depths_of_pairs(const cut_tree& tree) {
  const auto n = at(tree.terminals);
  std::vector<int> depths(n * n, 0), depth(tree.sizes.size(), 0);
  for (const int node : tree.outward)
    for (const int child : tree.children(node)) depth[at(child)] = depth[at(node)] + 1;
  std::vector<std::vector<int>> below(tree.sizes.size());
  for (int t = 0; t < tree.terminals; ++t) below[at(t)] = {t};
  for (auto node = tree.outward.rbegin(); node != tree.outward.rend(); ++node) {
    std::vector<int>& all = below[at(*node)];
    for (const int child : tree.children(*node)) {
      for (const int a : all)
        for (const int b : below[at(child)])
          depths[at(a) * n + at(b)] = depths[at(b) * n + at(a)] = depth[at(*node)];
      all.insert(all.end(), below[at(child)].begin(), below[at(child)].end());
      below[at(child)].clear();
    }
  }
  return depths;
}

}  // namespace

triplet_votes::triplet_votes(int taxa)
    : taxa_(taxa), votes_(taxa < 3 ? 0 : place(taxa - 3, taxa - 2, taxa - 1) + 1) {}

void triplet_votes::count(const_tree_span cut, const std::vector<int>& taxa) {
  const int n = static_cast<int>(taxa.size());
  const std::vector<int> depths = depths_of_pairs(cut_tree(cut, n));
  const auto depth = [&](int a, int b) { return depths[at(a) * at(n) + at(b)]; };
  for (int c = 2; c < n; ++c)
    for (int b = 1; b < c; ++b)
      for (int a = 0; a < b; ++a) {
        triplet_vote& vote = votes_[place(taxa[at(a)], taxa[at(b)], taxa[at(c)])];
        const int ab = depth(a, b), ac = depth(a, c), bc = depth(b, c);
        if (ab > ac)
          ++vote.apart[2];
        else if (ac > ab)
          ++vote.apart[1];
        else if (bc > ab)
          ++vote.apart[0];
        else
          ++vote.unresolved;
      }
}

}  // namespace zeb
