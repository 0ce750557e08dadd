// Distances of trees against what their definitions say, set by set, on small random trees.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <random>
#include <set>

#include "distances/agreement_subtree.h"
#include "distances/quartets.h"
#include "distances/rooting.h"
#include "distances/shared_splits.h"
#include "support/random_trees.h"

namespace {

using namespace zeb;
using zeb_test::record;
using sets = std::set<unsigned>;  // of terminals, as bits

/// The groups of the nodes of a tree, all kinds.
sets groups_of(const record& tree, int n) {
  sets out;
  for (int node = n; node < tree[static_cast<std::size_t>(n)]; ++node) {
    unsigned group = 0;
    for (int t = 0; t < n; ++t)
      if (tree[static_cast<std::size_t>(t)] != 0 && descends_from(tree, n, t, node))
        group |= 1U << t;
    out.insert(group);
  }
  return out;
}

/// The groups within `kept` of 2 terminals or more; unrooted: the side with its lowest terminal, of
/// those with 2 or more at each side.
sets groups_within(const sets& groups, unsigned kept, bool unrooted) {
  sets out;
  for (unsigned group : groups) {
    group &= kept;
    if (unrooted && (group & (kept & -kept)) == 0) group = kept & ~group;
    if (std::popcount(group) < 2 || (unrooted && std::popcount(kept & ~group) < 2)) continue;
    if (group != kept) out.insert(group);
  }
  return out;
}

resolution_counts compare_all(const sets& a, const sets& b, int n, int k) {
  resolution_counts counts;
  for (unsigned kept = 0; kept < 1U << n; ++kept) {
    if (std::popcount(kept) != k) continue;
    const sets in_a = groups_within(a, kept, k == 4);
    const sets in_b = groups_within(b, kept, k == 4);
    ++counts.all;
    if (in_a.empty() && in_b.empty())
      ++counts.neither;
    else if (in_b.empty())
      ++counts.first;
    else if (in_a.empty())
      ++counts.second;
    else
      ++(in_a == in_b ? counts.alike : counts.different);
  }
  return counts;
}

int largest_agreement(const sets& a, const sets& b, int n, bool unrooted) {
  int best = 0;
  for (unsigned kept = 0; kept < 1U << n; ++kept)
    if (std::popcount(kept) > best &&
        groups_within(a, kept, unrooted) == groups_within(b, kept, unrooted))
      best = std::popcount(kept);
  return best;
}

void expect_equal(const resolution_counts& a, const resolution_counts& b) {
  EXPECT_EQ(a.all, b.all);
  EXPECT_EQ(a.alike, b.alike);
  EXPECT_EQ(a.different, b.different);
  EXPECT_EQ(a.first, b.first);
  EXPECT_EQ(a.second, b.second);
  EXPECT_EQ(a.neither, b.neither);
}

unsigned bits_of(const std::vector<int>& terminals) {
  unsigned bits = 0;
  for (const int t : terminals) bits |= 1U << t;
  return bits;
}

TEST(tree_distances, are_those_of_their_definitions) {
  const int rounds = std::getenv("ZEB_LONG") ? 2000 : 60;
  for (unsigned seed = 1; seed <= static_cast<unsigned>(rounds); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const int n = 4 + static_cast<int>(random() % 6);
    const double polytomy = static_cast<double>(random() % 4) / 4;
    std::vector<record> trees;
    for (int i = 0; i < 2; ++i) {
      trees.push_back(zeb_test::random_tree(n, random, polytomy, 0));
      normalise_tree(trees.back(), n);
    }
    const cut_tree a(trees[0], n), b(trees[1], n);
    const sets in_a = groups_of(trees[0], n), in_b = groups_of(trees[1], n);
    expect_equal(compare_triplets(a, b), compare_all(in_a, in_b, n, 3));
    expect_equal(compare_quartets(a, b), compare_all(in_a, in_b, n, 4));
    const unsigned all = (1U << n) - 1;
    const std::vector<const_tree_span> both{trees[0], trees[1]};
    for (const bool unrooted : {false, true}) {
      const sets x = groups_within(in_a, all, unrooted), y = groups_within(in_b, all, unrooted);
      sets shared;
      std::ranges::set_intersection(x, y, std::inserter(shared, shared.end()));
      const shared_split_counts counts(both, n, unrooted, [](double) {});
      EXPECT_EQ(counts.distance(0, 1), static_cast<int>(x.size() + y.size() - 2 * shared.size()));
      const std::vector<int> kept =
          unrooted ? unrooted_agreement_subtree(a, b, [](double) {}) : agreement_subtree(a, b);
      EXPECT_EQ(static_cast<int>(kept.size()), largest_agreement(in_a, in_b, n, unrooted));
      EXPECT_EQ(groups_within(in_a, bits_of(kept), unrooted),
                groups_within(in_b, bits_of(kept), unrooted));
    }
  }
}

int shared(const sets& a, const sets& b) {
  return static_cast<int>(
      std::ranges::count_if(a, [&](unsigned group) { return b.contains(group); }));
}

TEST(tree_distances, roots_and_complements_are_those_of_all_branches) {
  for (unsigned seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const int n = 3 + static_cast<int>(random() % 6);
    const unsigned all = (1U << n) - 1;
    std::vector<record> trees;
    for (int i = 0; i < 2; ++i) {
      trees.push_back(zeb_test::random_tree(n, random, static_cast<double>(seed % 4) / 4, 0));
      normalise_tree(trees.back(), n);
    }
    const cut_tree a(trees[0], n), b(trees[1], n);
    const sets wanted = groups_within(groups_of(trees[0], n), all, false);
    const sets there = groups_within(groups_of(trees[1], n), all, false);
    sets clades = there;
    for (int t = 0; t < n; ++t) clades.insert(1U << t);
    sets sides = clades;
    for (const unsigned clade : clades) sides.insert(all & ~clade);
    sets complements;
    int best = shared(wanted, there);
    for (const unsigned side : sides) {
      if (clades.contains(all & ~side) && !there.contains(side)) complements.insert(side);
      sets with_root_here;
      for (const unsigned other : sides)
        if ((other & ~side) == 0 || (other & side) == 0) with_root_here.insert(other);
      best = std::max(best, shared(wanted, with_root_here));
    }
    const std::vector<group_match> matches = matches_of_groups(a, b);
    EXPECT_EQ(std::ranges::count(matches, group_match::same), shared(wanted, there));
    EXPECT_EQ(std::ranges::count(matches, group_match::complement), shared(wanted, complements));
    EXPECT_EQ(best_root_of(b, a).shared, best);
    EXPECT_EQ(best_root_of(b, a).shared_before, shared(wanted, there));
  }
}

TEST(tree_distances, of_several_trees_have_a_common_subtree_within_its_bounds) {
  random_generator generator(1);
  int exact = 0;
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const int n = 5 + static_cast<int>(random() % 5);
    const bool unrooted = seed % 2 == 0;
    std::vector<cut_tree> trees;
    std::vector<sets> groups;
    record tree = zeb_test::random_tree(n, random, 0.2, 0);
    for (int i = 0; i < 3; ++i) {
      std::swap(tree[random() % static_cast<unsigned>(n)],
                tree[random() % static_cast<unsigned>(n)]);
      normalise_tree(tree, n);
      trees.emplace_back(tree, n);
      groups.push_back(groups_of(tree, n));
    }
    int best = 0;
    for (unsigned kept = 0; kept < 1U << n; ++kept) {
      const sets first = groups_within(groups[0], kept, unrooted);
      if (groups_within(groups[1], kept, unrooted) == first &&
          groups_within(groups[2], kept, unrooted) == first)
        best = std::max(best, std::popcount(kept));
    }
    const common_subtree found =
        common_agreement_subtree(trees, unrooted, 20, generator, [](double) {});
    const unsigned kept = bits_of(found.terminals);
    for (const sets& g : groups)
      EXPECT_EQ(groups_within(g, kept, unrooted), groups_within(groups[0], kept, unrooted));
    EXPECT_LE(found.terminals.size(), static_cast<std::size_t>(best));
    EXPECT_GE(found.at_most, best);
    exact += static_cast<int>(found.terminals.size()) == best;
  }
  EXPECT_GT(exact, 50);
}

}  // namespace
