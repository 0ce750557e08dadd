// What fusing, hybridising and rebuilding stand on: clades that go from tree to tree, and trees
// taken to pieces, on data of all kinds.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "engine/fit/weighting_settings.h"
#include "engine/passes/passes.h"
#include "property/mixed_search.h"
#include "search/drivers/hybrid.h"
#include "search/drivers/rebuild.h"
#include "search/moves/clade_exchange.h"
#include "search/moves/tree_in_pieces.h"
#include "search/moves/walked_tree.h"
#include "search/search_session.h"
#include "search/store/stored_trees.h"

namespace zeb {
namespace {

using tree_array = std::vector<std::int32_t>;
using zeb_test::draw;
using zeb_test::plain_tree;

using pieces = zeb_test::mixed_searches;

void fill(int ntax, bool fits, std::mt19937& g) {
  zeb_test::fill_for_search(ntax, 4, fits, "keep 0; hold 20; randtrees 2;", g);
}

/// The clades of a tree, as sets of those terminals that are asked for.
std::set<std::vector<int>> clades_of(std::span<const std::int32_t> tree, int n,
                                     const std::vector<std::uint8_t>& is_in) {
  std::vector<std::vector<int>> below(tree.size());
  for (int t = 1; t < n; ++t) {
    if (!is_in[static_cast<std::size_t>(t)]) continue;
    for (int v = t; v != n; v = tree[static_cast<std::size_t>(v)])
      below[static_cast<std::size_t>(v)].push_back(t);
  }
  return {below.begin(), below.end()};
}

TEST_F(pieces, a_terminal_goes_back_where_no_place_is_cheaper) {
  std::mt19937 g(1);
  for (int round = 0; round < 100; ++round) {
    const int n = draw(g, 5, 14);
    fill(n, false, g);
    search_session session;
    search_context& context = session.context();
    if (context.data.has_asymmetric) continue;
    const tree_array tree = plain_tree(context, 0);
    const int terminal = draw(g, 1, n - 1);
    double best = tree_length(context.data, tree);
    for (const std::int32_t branch : walked_tree(tree, n).preorder) {
      // Moved by hand: the joint goes along.
      const auto joint = static_cast<std::size_t>(tree[static_cast<std::size_t>(terminal)]);
      if (static_cast<int>(joint) == n || branch == terminal || branch == tree[terminal]) continue;
      tree_array moved = tree;
      for (std::int32_t& above : moved)
        above = above == static_cast<int>(joint) ? moved[joint] : above;
      moved[joint] = moved[static_cast<std::size_t>(branch)];
      moved[static_cast<std::size_t>(branch)] = static_cast<int>(joint);
      moved[static_cast<std::size_t>(terminal)] = static_cast<int>(joint);
      best = std::min(best, tree_length(context.data, moved));
    }
    tree_in_pieces forest(context, tree);
    if (!forest.cut(terminal)) continue;
    forest.make_sets();
    tree_array joined = tree;
    forest.join_all(joined);
    EXPECT_NEAR(tree_length(context.data, joined), best, 1e-9) << "round " << round;
  }
}

TEST_F(pieces, hybrids_have_the_piece_of_the_one_and_the_rest_of_the_other) {
  std::mt19937 g(2);
  int crossed = 0;
  for (int round = 0; round < 100; ++round) {
    const int n = draw(g, 6, 16);
    fill(n, round % 3 == 0, g);
    search_session session;
    search_context& context = session.context();
    const tree_array a = plain_tree(context, 0);
    const tree_array b = plain_tree(context, context.trees.ntrees - 1);
    crossing made;
    if (!cross_trees(context, a, b, 50, &made)) continue;
    ++crossed;
    std::vector<std::uint8_t> rest = made.piece.is_in;
    for (std::uint8_t& is_in : rest) is_in = !is_in;
    for (const int side : {0, 1}) {
      const tree_array& hybrid = made.hybrids[static_cast<std::size_t>(side)];
      const auto& in_piece = made.piece.is_in;
      EXPECT_EQ(clades_of(hybrid, n, in_piece), clades_of(side ? a : b, n, in_piece));
      EXPECT_EQ(clades_of(hybrid, n, rest), clades_of(side ? b : a, n, rest));
      EXPECT_EQ(tree_length(context.data, hybrid), made.scores[static_cast<std::size_t>(side)]);
    }
  }
  EXPECT_GT(crossed, 40);
}

TEST_F(pieces, exchanges_never_lose_and_scores_are_those_of_the_trees) {
  std::mt19937 g(3);
  int taken = 0;
  for (int round = 0; round < 200; ++round) {
    const int n = draw(g, 5, 16);
    fill(n, round % 3 == 0, g);
    search_session session;
    search_context& context = session.context();
    tree_array target = plain_tree(context, 0);
    // A tree not far from it: two clades went elsewhere.
    tree_array source = target;
    tree_in_pieces forest(context, source);
    for (int i = 0; i < 2; ++i) forest.cut(draw(g, 1, 2 * n - 2));
    forest.make_sets();
    forest.join_all(source);
    const double before = tree_length(context.data, target);
    double score = before;
    const exchange_rules rules{round % 2 == 0, round % 5 == 0, 0};
    taken += exchange_clades(context, target, source, rules, &score);
    EXPECT_LE(score, before + 1e-9);
    EXPECT_NEAR(tree_length(context.data, target), score, 1e-9) << "round " << round;
  }
  EXPECT_GT(taken, 20);
}

TEST_F(pieces, without_slots_the_best_rebuilt_tree_is_handed_back) {
  std::mt19937 g(4);
  for (int round = 0; round < 60; ++round) {
    fill(draw(g, 4, 14), round % 3 == 0, g);
    search_session session;
    search_context& context = session.context();
    const int trees = context.trees.ntrees;
    tree_array tree = plain_tree(context, 0);
    const double start = tree_length(context.data, tree);
    const rebuild_settings how{.cycles = 4, .size = round % 4, .ancfirst = round % 2 == 0};
    const double best = rebuild_search(context, tree, how, {}).best;
    EXPECT_EQ(tree_length(context.data, tree), best);
    EXPECT_LE(best, start);
    EXPECT_EQ(context.trees.ntrees, trees);
  }
}

}  // namespace
}  // namespace zeb
