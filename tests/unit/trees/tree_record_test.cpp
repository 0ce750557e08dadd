// Operations on one tree, against what its clades and splits say.
#include <gtest/gtest.h>

#include "support/random_trees.h"
#include "trees/tree_walks.h"

namespace zeb {
namespace {

using zeb_test::clades;
using zeb_test::random_tree;
using zeb_test::record;
using zeb_test::splits;

struct random_case {
  int ntax;
  record tree;
};

random_case draw_case(std::mt19937& random) {
  const int ntax = 4 + static_cast<int>(random() % 30);
  const double polytomy = 0.1 * static_cast<double>(random() % 8);
  const double absent = random() % 2 == 0 ? 0.0 : 0.3;
  return {ntax, random_tree(ntax, random, polytomy, absent)};
}

TEST(tree_record, normal_form_is_one_for_each_tree) {
  std::mt19937 random(1);
  for (int round = 0; round < 300; ++round) {
    auto [ntax, tree] = draw_case(random);
    record again = tree;
    // Another numbering of the internal nodes: two of them change places.
    const int limit = tree[static_cast<std::size_t>(ntax)];
    if (limit > ntax + 2) {
      const int a = ntax + 1;
      const int b = limit - 1;
      std::swap(again[static_cast<std::size_t>(a)], again[static_cast<std::size_t>(b)]);
      for (std::size_t v = 0; v < static_cast<std::size_t>(limit); ++v) {
        if (v == static_cast<std::size_t>(ntax)) continue;
        if (again[v] == a) {
          again[v] = b;
        } else if (again[v] == b) {
          again[v] = a;
        }
      }
    }
    const auto before = clades(tree, ntax);
    normalise_tree(tree, ntax);
    normalise_tree(again, ntax);
    const auto used = static_cast<std::ptrdiff_t>(limit);
    EXPECT_TRUE(std::equal(tree.begin(), tree.begin() + used, again.begin())) << round;
    EXPECT_EQ(clades(tree, ntax), before) << round;
    EXPECT_EQ(check_tree_record(tree, ntax), "") << round;
  }
}

TEST(tree_record, known_numbers) {
  record bush{4, 4, 4, 4, 5, 0, 0};
  normalise_tree(bush, 4);
  EXPECT_EQ(bush, (record{4, 4, 4, 4, 5, 0, 0}));
  // (0 (1 (2 3))) with the two inner nodes in the other order.
  record comb{4, 6, 5, 5, 7, 6, 4};
  normalise_tree(comb, 4);
  EXPECT_EQ(comb, (record{4, 5, 6, 6, 7, 4, 5}));
}

TEST(tree_record, damage_is_found) {
  const record good{4, 5, 6, 6, 7, 4, 5};
  EXPECT_EQ(check_tree_record(good, 4), "");
  const auto broken = [&](std::size_t cell, int value) {
    record tree = good;
    tree[cell] = value;
    return !check_tree_record(tree, 4).empty();
  };
  EXPECT_TRUE(broken(4, 8));   // more nodes than there can be
  EXPECT_TRUE(broken(4, 4));   // no root
  EXPECT_TRUE(broken(1, 3));   // a terminal as ancestor
  EXPECT_TRUE(broken(1, 7));   // past the last node
  EXPECT_TRUE(broken(2, 5));   // leaves node 6 with one descendant
  EXPECT_TRUE(broken(1, -1));  // no node
  EXPECT_FALSE(check_tree_record(record{4, 4, 6, 5, 7, 6, 5}, 4).empty());  // a circle
}

TEST(tree_record, pruning_keeps_the_other_taxa_as_they_were) {
  std::mt19937 random(2);
  for (int round = 0; round < 300; ++round) {
    auto [ntax, tree] = draw_case(random);
    std::vector<std::uint8_t> flags(static_cast<std::size_t>(ntax));
    int left = 0;
    for (int t = 0; t < ntax; ++t) {
      const auto i = static_cast<std::size_t>(t);
      flags[i] = random() % 3 == 0;
      left += tree[i] != 0 && !flags[i];
    }
    if (left < 2) continue;
    // The clades of the pruned tree, found by marking absent what goes.
    record marked = tree;
    for (std::size_t t = 0; t < flags.size(); ++t) {
      if (flags[t]) marked[t] = 0;
    }
    std::vector<std::uint64_t> expected = clades(marked, ntax);
    expected.erase(std::unique(expected.begin(), expected.end()), expected.end());
    delete_taxa(tree, ntax, flags);
    EXPECT_EQ(clades(tree, ntax), expected) << round;
    EXPECT_EQ(check_tree_record(tree, ntax), "") << round;
  }
}

TEST(tree_record, rerooting_keeps_the_splits) {
  std::mt19937 random(3);
  for (int round = 0; round < 300; ++round) {
    auto [ntax, tree] = draw_case(random);
    const int terminal = static_cast<int>(random() % static_cast<unsigned>(ntax));
    const auto before = splits(tree, ntax);
    const bool there = tree[static_cast<std::size_t>(terminal)] != 0;
    reroot_tree(tree, ntax, terminal);
    EXPECT_EQ(splits(tree, ntax), before) << round;
    EXPECT_EQ(check_tree_record(tree, ntax), "") << round;
    if (!there) continue;
    EXPECT_EQ(tree[static_cast<std::size_t>(terminal)], ntax);
    EXPECT_EQ(descendants_of(tree, ntax).count[static_cast<std::size_t>(ntax)], 2) << round;
  }
}

TEST(tree_record, absent_taxa_join_below_the_tree) {
  record tree{4, 4, 0, 0, 5, 0, 0};
  include_absent_taxa(tree, 4);
  EXPECT_EQ(tree, (record{5, 5, 4, 4, 6, 4, 0}));
  record single{4, 0, 0, 0, 5, 0, 0};
  include_absent_taxa(single, 4);
  EXPECT_EQ(single, (record{4, 4, 4, 4, 5, 0, 0}));
}

TEST(tree_record, clades_move_to_branches_and_nodes) {
  // (0 (1 (2 (3 4)))): nodes 5, 6, 7, 8.
  const record comb{5, 6, 7, 8, 8, 9, 5, 6, 7};
  record tree = comb;
  EXPECT_TRUE(move_clade(tree, 5, 8, 0, false));  // ((0 (3 4)) (1 2))
  EXPECT_EQ(tree, (record{6, 7, 7, 8, 8, 9, 5, 5, 6}));
  tree = comb;
  EXPECT_TRUE(move_clade(tree, 5, 4, 5, true));  // (0 4 (1 (2 3)))
  EXPECT_EQ(tree[5], 8);
  EXPECT_EQ(tree[4], 5);
  tree = comb;
  EXPECT_FALSE(move_clade(tree, 5, 7, 8, false));
  EXPECT_EQ(tree, comb);
}

}  // namespace
}  // namespace zeb
