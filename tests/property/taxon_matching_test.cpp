// Maps between the taxa of trees against all maps there are.
#include "distances/matching/taxon_matching.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <set>

#include "support/random_trees.h"

namespace {

using namespace zeb;
using zeb_test::record;

/// Groups that two trees of `n` and `m` terminals, n <= m, share by a map.
int shared_by(const record& a, int n, const record& b, int m, const std::vector<int>& map) {
  const auto groups = [](const record& tree, int size, const std::vector<int>& name) {
    std::set<unsigned> out;
    for (int node = size + 1; node < tree[at(size)]; ++node) {
      unsigned group = 0;
      for (int t = 0; t < size; ++t)
        if (name[at(t)] >= 0 && descends_from(tree, size, t, node)) group |= 1U << name[at(t)];
      out.insert(group);
    }
    return out;
  };
  std::vector<int> own(at(n)), names(at(m), -1);
  std::iota(own.begin(), own.end(), 0);
  for (int t = 0; t < n; ++t) names[at(map[at(t)])] = t;
  const auto in_a = groups(a, n, own), in_b = groups(b, m, names);
  return static_cast<int>(
      std::ranges::count_if(in_a, [&](unsigned g) { return in_b.contains(g); }));
}

TEST(taxon_matching, finds_the_best_of_all_maps) {
  random_generator generator(1);
  int exact = 0;
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const int n = 4 + static_cast<int>(random() % 3), m = n + static_cast<int>(random() % 2);
    record a = zeb_test::random_tree(n, random, 0.2, 0),
           b = zeb_test::random_tree(m, random, 0.2, 0);
    normalise_tree(a, n);
    normalise_tree(b, m);
    std::vector<int> fixed(at(n), -1);
    if (seed % 3 == 0) fixed[0] = 1;
    const taxon_match found =
        match_taxa(cut_tree(a, n), cut_tree(b, m), fixed, 20, generator, [](double) {});
    EXPECT_EQ(found.shared, shared_by(a, n, b, m, found.map));
    int best = 0;
    std::vector<int> map(at(m));
    std::iota(map.begin(), map.end(), 0);
    do {
      if (fixed[0] < 0 || map[0] == fixed[0]) best = std::max(best, shared_by(a, n, b, m, map));
    } while (std::ranges::next_permutation(map).found);
    EXPECT_LE(found.shared, best);
    EXPECT_GE(found.at_most, best);
    exact += found.shared == best;
  }
  EXPECT_EQ(exact, 60);
}

TEST(taxon_matching, finds_a_tree_again_whose_taxa_have_other_names) {
  random_generator generator(1);
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::mt19937 random(seed);
    const int n = 20 + static_cast<int>(random() % 60);
    const record a = zeb_test::random_tree(n, random, 0.1, 0);
    record b = a;
    std::shuffle(b.begin(), b.begin() + n, random);
    const std::vector<int> fixed(at(n), -1);
    record first = a;
    normalise_tree(first, n);
    normalise_tree(b, n);
    const taxon_match found =
        match_taxa(cut_tree(first, n), cut_tree(b, n), fixed, 1, generator, [](double) {});
    EXPECT_TRUE(found.is_exact()) << "seed " << seed;
  }
}

}  // namespace
