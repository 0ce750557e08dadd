// Supertrees: of trees of the same taxa against consensus from sets of sets, of parts of one tree
// against that tree, of any trees against what each group shown must be.
#include "distances/supertrees/supertree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support/consensus_oracle.h"
#include "support/random_trees.h"

namespace {

using namespace zeb;
using zeb_test::oracle_trees;
using zeb_test::record;

oracle_trees random_trees(std::mt19937& random, unsigned per_cent_absent) {
  oracle_trees out;
  out.ntax = 4 + static_cast<int>(random() % 6);
  const double polytomy = static_cast<double>(random() % 3) / 4;
  const record first = zeb_test::random_tree(out.ntax, random, polytomy, 0);
  for (unsigned i = 0; i < 2 + random() % 4; ++i) {
    record tree = first;
    for (unsigned m = random() % 4; m > 0; --m)
      std::swap(tree[random() % at(out.ntax)], tree[random() % at(out.ntax)]);
    std::vector<std::uint8_t> left_out(at(out.ntax), 0);
    for (int t = 0; t < out.ntax - 3; ++t) left_out[at(t)] = random() % 100 < per_cent_absent;
    delete_taxa(tree, out.ntax, left_out);
    out.trees.push_back(tree);
  }
  return out;
}

supertree made_of(const oracle_trees& input, int kind) {
  const std::vector<const_tree_span> trees(input.trees.begin(), input.trees.end());
  return make_supertree(trees, input.ntax, taxon_set(input.ntax), {.kind = kind, .cut = 50},
                        [](double) {});
}

/// The groups of a tree of all taxa.
std::set<zeb_test::taxon_set> groups_of(const record& tree, int ntax) {
  std::set<zeb_test::taxon_set> out;
  for (const auto& [node, group] : zeb_test::node_groups(tree, ntax, {}))
    if (group.size() > 1) out.insert(group);
  return out;
}

std::set<zeb_test::taxon_set> keys_of(const zeb_test::group_counts& counts) {
  std::set<zeb_test::taxon_set> out;
  for (const auto& [group, count] : counts) out.insert(group);
  return out;
}

TEST(supertrees, of_trees_of_the_same_taxa_are_their_consensus) {
  for (unsigned seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const oracle_trees input = random_trees(random, 0);
    const auto groups = [&](int kind) { return groups_of(made_of(input, kind).tree, input.ntax); };
    EXPECT_EQ(groups(supertree_settings::strict), keys_of(zeb_test::oracle_strict(input)));
    EXPECT_EQ(groups(supertree_settings::combinable), keys_of(zeb_test::oracle_components(input)));
    EXPECT_EQ(groups(supertree_settings::majority), keys_of(zeb_test::oracle_majority(input, 50)));
  }
}

TEST(supertrees, of_parts_of_a_tree_have_all_that_these_say) {
  for (unsigned seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    oracle_trees input;
    input.ntax = 5 + static_cast<int>(random() % 8);
    const record whole = zeb_test::random_tree(input.ntax, random, 0.2, 0);
    for (int i = 0; i < 4; ++i) {
      record part = whole;
      std::vector<std::uint8_t> left_out(at(input.ntax), 0);
      for (int t = 0; t < input.ntax - 3; ++t) left_out[at(t)] = random() % 3 == 0;
      delete_taxa(part, input.ntax, left_out);
      input.trees.push_back(part);
    }
    const supertree made = made_of(input, supertree_settings::build);
    EXPECT_TRUE(made.compatible);
    for (const record& part : input.trees) {
      record cut = made.tree;
      std::vector<std::uint8_t> left_out(at(input.ntax), 0);
      for (int t = 0; t < input.ntax; ++t) left_out[at(t)] = is_absent(part, t);
      delete_taxa(cut, input.ntax, left_out);
      const auto said = groups_of(part, input.ntax), shown = groups_of(cut, input.ntax);
      EXPECT_TRUE(std::ranges::includes(shown, said));
    }
  }
}

TEST(supertrees, show_groups_that_are_what_was_asked_for) {
  for (unsigned seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const oracle_trees input = random_trees(random, 30);
    for (const int kind : {supertree_settings::strict, supertree_settings::combinable}) {
      const supertree made = made_of(input, kind);
      ASSERT_EQ(check_tree_record(made.tree, input.ntax), "");
      for (const auto& group : groups_of(made.tree, input.ntax)) {
        for (const record& tree : input.trees) {
          zeb_test::taxon_set own, all;
          for (int t = 0; t < input.ntax; ++t)
            if (!is_absent(tree, t)) all.insert(t);
          std::ranges::set_intersection(group, all, std::inserter(own, own.end()));
          if (own.size() < 2 || own == all) continue;
          const auto groups = groups_of(tree, input.ntax);
          EXPECT_TRUE(kind != supertree_settings::strict || groups.contains(own));
          for (const auto& other : groups) EXPECT_FALSE(zeb_test::contradict(own, other));
        }
      }
    }
  }
}

}  // namespace
