// Every method and memory path against consensus from sets of sets, on random sets of trees.
#include "consensus/conflict_consensus.h"
#include "consensus/majority_consensus.h"
#include "consensus/strict_consensus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

#include "base/arena.h"
#include "support/consensus_oracle.h"
#include "support/program.h"
#include "support/random_trees.h"

namespace {

using namespace zeb;
using zeb_test::group_counts;
using zeb_test::oracle_trees;

class consensus_test : public ::testing::Test {
 protected:
  void SetUp() override {
    zeb_test::run_program("xwipe;");  // data of other tests lie in the arena
    unlock_all();
    old_size_ = arena.size;
    create_arena(64'000'000);
  }
  void TearDown() override { create_arena(old_size_); }

 private:
  std::size_t old_size_ = 0;
};

/// Trees near one tree, so that groups are shared: a few terminals move in each.
oracle_trees random_trees(std::mt19937& random) {
  oracle_trees out;
  out.ntax = 4 + static_cast<int>(random() % 57);
  const double polytomy = static_cast<double>(random() % 50) / 100;
  const double absent = random() % 4 ? 0 : static_cast<double>(random() % 20) / 100;
  const auto seed = random();
  const int n = 1 + static_cast<int>(random() % 14);
  const auto moves = static_cast<int>(random() % 4);
  for (int i = 0; i < n; ++i) {
    std::mt19937 same(seed);
    auto tree = zeb_test::random_tree(out.ntax, same, polytomy, absent);
    // Exchanging terminals keeps the shape and changes the groups around them.
    for (int m = 0; m < moves; ++m) {
      const auto a = random() % static_cast<unsigned>(out.ntax);
      const auto b = random() % static_cast<unsigned>(out.ntax);
      std::swap(tree[a], tree[b]);
    }
    if (random() % 8 == 0) tree = zeb_test::random_tree(out.ntax, random, polytomy, absent);
    out.trees.push_back(tree);
  }
  if (random() % 3 == 0)
    for (int t = 0; t < out.ntax - 1; ++t)
      if (random() % 5 == 0) out.excluded.insert(t);
  return out;
}

tree_selection selection_of(const oracle_trees& input, bool low_memory) {
  tree_selection out;
  out.ntax = input.ntax;
  for (const auto& tree : input.trees) out.trees.emplace_back(tree);
  if (!input.excluded.empty()) {
    out.excluded.assign(static_cast<std::size_t>(input.ntax), 0);
    for (const int t : input.excluded) out.excluded[static_cast<std::size_t>(t)] = 1;
  }
  out.low_memory = low_memory;
  return out;
}

/// The result as groups with values; it must be in normal form, with the taxa of any tree that
/// aren't excluded.
group_counts groups_of(const group_tree& result, const oracle_trees& input) {
  EXPECT_EQ(check_tree_record(result.tree, input.ntax), "");
  std::vector<tree_node> normal = result.tree;
  normalise_tree(normal, input.ntax);
  EXPECT_EQ(normal, result.tree);
  for (int t = 0; t < input.ntax; ++t) {
    const bool in_some_tree = std::any_of(input.trees.begin(), input.trees.end(),
                                          [&](const auto& tree) { return !is_absent(tree, t); });
    EXPECT_EQ(!is_absent(result.tree, t), in_some_tree && !input.excluded.contains(t)) << t;
  }
  group_counts out;
  for (const auto& [node, group] : zeb_test::node_groups(result.tree, input.ntax, {}))
    out[group] = result.values[static_cast<std::size_t>(node)];
  return out;
}

TEST_F(consensus_test, agrees_with_sets_of_sets_on_both_memory_paths) {
  std::mt19937 random(20240);
  const int rounds = std::getenv("ZEB_SLOW_TESTS") ? 5000 : 250;
  for (int round = 0; round < rounds; ++round) {
    const oracle_trees input = random_trees(random);
    const int cut = 50 + static_cast<int>(random() % 51);
    const int difference = static_cast<int>(random() % 101);
    for (const bool low_memory : {false, true}) {
      const tree_selection selection = selection_of(input, low_memory);
      ASSERT_EQ(groups_of(strict_consensus(selection), input), zeb_test::oracle_strict(input))
          << "round " << round << " low memory " << low_memory;
      if (!low_memory || input.excluded.empty()) {
        ASSERT_EQ(groups_of(majority_consensus(selection, cut), input),
                  zeb_test::oracle_majority(input, cut))
            << "round " << round << " low memory " << low_memory << " cut " << cut;
      }
    }
    const tree_selection selection = selection_of(input, false);
    ASSERT_EQ(groups_of(difference_consensus(selection, difference), input),
              zeb_test::oracle_differences(input, difference))
        << "round " << round << " cut " << difference;
    ASSERT_EQ(groups_of(component_consensus(selection), input), zeb_test::oracle_components(input))
        << "round " << round;
  }
}

TEST_F(consensus_test, finds_the_frequencies_of_one_trees_groups) {
  std::mt19937 random(6);
  for (int round = 0; round < 500; ++round) {
    oracle_trees input = random_trees(random);
    const auto reference = input.trees.back();
    if (input.trees.size() > 1) input.trees.pop_back();
    const tree_selection selection = selection_of(input, false);
    const std::vector<int> frequencies = group_frequencies(selection, reference);
    const std::vector<int> differences = group_differences(selection, reference);
    const std::vector<contested_group> contested = contested_groups(selection, reference);
    const group_counts counts = zeb_test::count_groups(input);
    const std::size_t in_play = static_cast<std::size_t>(input.ntax) - input.excluded.size();
    for (const auto& [node, group] : zeb_test::node_groups(reference, input.ntax, input.excluded)) {
      const auto n = static_cast<std::size_t>(node);
      if (group.size() < 2 || group.size() >= in_play) {
        ASSERT_EQ(frequencies[n], -1);
        ASSERT_EQ(differences[n], no_group);
        continue;
      }
      const auto found = counts.find(group);
      const int count = found == counts.end() ? 0 : found->second;
      ASSERT_EQ(frequencies[n], count) << "round " << round;
      const zeb_test::taxon_set other(contested[n].other.begin(), contested[n].other.end());
      ASSERT_EQ(contested[n].against, other.empty() ? 0 : counts.at(other)) << "round " << round;
      ASSERT_TRUE(other.empty() || zeb_test::contradict(group, other)) << "round " << round;
      ASSERT_EQ(differences[n], count - zeb_test::worst_contradiction(counts, group));
    }
  }
}

TEST_F(consensus_test, counts_weighted_branches_and_grows_without_losing_any) {
  std::mt19937 random(17);
  for (int round = 0; round < 200; ++round) {
    oracle_trees input = random_trees(random);
    // Many more distinct groups than two trees have.
    while (input.trees.size() < 40)
      input.trees.push_back(zeb_test::random_tree(input.ntax, random, 0.1, 0));
    for (const auto& tree : input.trees) {
      input.weights.emplace_back();
      for (std::size_t n = 0; n <= tree.size(); ++n)
        input.weights.back().push_back(random() % 4 != 0);
    }
    const arena_scope scope;
    group_tally tally(input.ntax, taxa_left_out(selection_of(input, false)));
    for (std::size_t i = 0; i < input.trees.size(); ++i)
      ASSERT_TRUE(tally.count_tree_groups(input.trees[i], input.weights[i], true));
    group_counts counts;
    for (const group_record& group : tally.groups()) {
      if (group.count == 0) continue;
      zeb_test::taxon_set taxa;
      for (int t = 0; t < input.ntax; ++t)
        if (group.words[t / taxa_per_word] >> (t % taxa_per_word) & 1) taxa.insert(t);
      ASSERT_TRUE(counts.emplace(taxa, group.count).second) << "group entered twice";
    }
    ASSERT_EQ(counts, zeb_test::count_groups(input)) << "round " << round;
  }
}

TEST_F(consensus_test, goes_on_in_little_memory_when_the_arena_is_full) {
  std::mt19937 random(3);
  oracle_trees input;
  input.ntax = 60;
  for (int i = 0; i < 200; ++i)
    input.trees.push_back(zeb_test::random_tree(input.ntax, random, 0.1, 0));
  const tree_selection selection = selection_of(input, false);
  const group_tree expected = majority_consensus(selection, 50);
  const group_tree strict = strict_consensus(selection);
  create_arena(40'000);
  EXPECT_EQ(majority_consensus(selection, 50).tree, expected.tree);
  create_arena(1'000);
  EXPECT_EQ(strict_consensus(selection).tree, strict.tree);
}

TEST_F(consensus_test, handles_deep_trees) {
  oracle_trees input;
  input.ntax = 3000;
  for (int i = 0; i < 3; ++i) input.trees.push_back(zeb_test::caterpillar(input.ntax));
  // Terminals 5 and 12 change places: seven groups of the ladder are no longer in this tree.
  std::swap(input.trees[1][5], input.trees[1][12]);
  for (const bool low_memory : {false, true}) {
    const tree_selection selection = selection_of(input, low_memory);
    EXPECT_EQ(majority_consensus(selection, 50).tree[3000], 5999);
    EXPECT_EQ(strict_consensus(selection).tree[3000], 5999 - 7);
  }
}

}  // namespace
