// Numbers of SPR moves against going through all trees, neighbour by neighbour.
#include "distances/moves/spr_path.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "support/random_trees.h"

namespace {

using namespace zeb;
using zeb_test::record;

/// All trees one move of a clade away.
std::vector<record> neighbours(const record& tree, int n) {
  std::vector<record> out;
  for (int node = 0; node < 2 * n - 1; ++node)
    for (int target = 0; target < 2 * n - 1; ++target) {
      record moved = tree;
      if (node != n && move_clade(moved, n, node, target, false)) out.push_back(moved);
    }
  return out;
}

/// Moves from a tree to all others.
std::map<record, int> moves_from(const record& tree, int n) {
  std::map<record, int> moves{{tree, 0}};
  std::vector<record> reached{tree};
  for (std::size_t i = 0; i < reached.size(); ++i)
    for (record& next : neighbours(record(reached[i]), n))
      if (moves.try_emplace(next, moves[reached[i]] + 1).second) reached.push_back(std::move(next));
  return moves;
}

record random_binary(int n, std::mt19937& random) {
  record tree = zeb_test::random_tree(n, random, 0, 0);
  normalise_tree(tree, n);
  return tree;
}

TEST(spr_moves, are_the_fewest_and_lead_from_tree_to_tree) {
  const bool is_long = std::getenv("ZEB_LONG") != nullptr;
  random_generator generator(1);
  for (unsigned seed = 1; seed <= (is_long ? 40U : 6U); ++seed) {
    std::mt19937 random(seed);
    const int n = 4 + static_cast<int>(seed % (is_long ? 4 : 3));
    const record start = random_binary(n, random);
    const cut_tree a(start, n);
    const forest_effort few_runs{.replications = 1, .steps = 100000};
    for (const auto& [tree, moves] : moves_from(start, n)) {
      const cut_tree b(tree, n);
      const agreement_forest forest = smallest_forest(a, b, few_runs, generator, [] {});
      ASSERT_TRUE(forest.is_exact());
      ASSERT_EQ(forest.moves(), moves) << "seed " << seed;
      const std::vector<clade_move> path = moves_between(a, b, forest);
      ASSERT_EQ(static_cast<int>(path.size()), moves);
    }
  }
}

TEST(spr_moves, have_bounds_that_hold_where_they_are_not_exact) {
  random_generator generator(1);
  for (unsigned seed = 1; seed <= 40; ++seed) {
    std::mt19937 random(seed);
    const int n = 10 + static_cast<int>(random() % 30);
    const record start = random_binary(n, random);
    record end = start;
    for (int i = 0; i < 6; ++i)
      move_clade(end, n, static_cast<int>(random() % static_cast<unsigned>(n)),
                 static_cast<int>(random() % static_cast<unsigned>(2 * n - 1)), false);
    const cut_tree a(start, n), b(end, n);
    const auto forest = [&](const forest_effort& effort) {
      return smallest_forest(a, b, effort, generator, [] {});
    };
    const agreement_forest exact = forest({.replications = 20, .steps = 1000000});
    const agreement_forest bounds = forest({.replications = 1, .steps = 0});
    ASSERT_TRUE(exact.is_exact());
    EXPECT_LE(exact.moves(), 6);
    EXPECT_LE(bounds.at_least, exact.moves()) << "seed " << seed;
    EXPECT_GE(bounds.moves(), exact.moves()) << "seed " << seed;
    EXPECT_EQ(static_cast<int>(moves_between(a, b, bounds).size()), bounds.moves());
  }
}

}  // namespace
