// What the cycles of ratchet and drift stand on: weights that change without packing, constraints
// that a search sets itself, runs that store nothing.
#include "search/drivers/cycles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "base/arena.h"
#include "engine/fit/weighting_settings.h"
#include "engine/kernels/reweighting.h"
#include "engine/packing/packing.h"
#include "engine/passes/passes.h"
#include "property/mixed_search.h"
#include "search/drivers/auto_constraint.h"
#include "search/drivers/drift.h"
#include "search/drivers/ratchet.h"
#include "search/moves/perturbation.h"
#include "search/moves/swapper.h"
#include "search/search_session.h"
#include "search/store/stored_trees.h"

namespace zeb {
namespace {

using zeb_test::draw;
using zeb_test::plain_tree;

using search_cycles = zeb_test::mixed_searches;

void fill(int ntax, std::mt19937& g) {
  zeb_test::fill_for_search(ntax, 4, false, "keep 0; hold 20; randtrees 2;", g);
  weighting.on = zeb_test::chance(g, 0.3);
}

TEST_F(search_cycles, reweighted_data_score_as_those_packed_with_the_weights) {
  std::mt19937 g(1);
  for (int round = 0; round < 150; ++round) {
    fill(draw(g, 4, 12), g);
    search_session session;
    search_context& context = session.context();
    std::vector<std::int32_t> a = plain_tree(context, 0);
    std::vector<std::int32_t> b = plain_tree(context, context.trees.ntrees - 1);
    const auto apart = [&](search_data& data) {
      return tree_length(data, a) - tree_length(data, b);
    };
    const double usual = apart(context.data);
    reweighting weights(context.data);
    for (int change = 0; change < 3; ++change) {
      std::vector<std::uint8_t> factor;
      packing_request request = request_of_settings();
      for (std::int32_t& weight : request.weights) {
        factor.push_back(static_cast<std::uint8_t>(draw(g, 0, 2)));
        weight *= factor.back();
      }
      weights.multiply(factor);
      const arena_scope memory;
      search_data packed;
      prepare_search_data(packed, request);
      EXPECT_NEAR(apart(context.data), apart(packed), 1e-9) << "round " << round;
    }
    weights.put_back();
    EXPECT_EQ(apart(context.data), usual) << "round " << round;
  }
}

/// The clades of a tree, as sets of terminals.
std::set<std::vector<int>> clades_of(std::span<const std::int32_t> tree, int n) {
  std::vector<std::vector<int>> below(tree.size());
  for (int t = 1; t < n; ++t) {
    for (int v = t; v != n; v = tree[static_cast<std::size_t>(v)])
      below[static_cast<std::size_t>(v)].push_back(t);
  }
  return {below.begin(), below.end()};
}

TEST_F(search_cycles, what_two_trees_share_is_kept_while_a_constraint_lives) {
  std::mt19937 g(2);
  int shared = 0;
  for (int round = 0; round < 60; ++round) {
    const int n = draw(g, 5, 14);
    fill(n, g);
    search_session session;
    search_context& context = session.context();
    const std::vector<std::int32_t> a = plain_tree(context, 0);
    // Another one not far from it.
    std::vector<std::int32_t> b = a;
    perturbation how;
    how.most_moves = 3;
    how.accept_worse = true;
    how.fit_difference = how.relative_fit_difference = how.factor = 100;
    tbr_swap(context, b, {.perturbing = &how});
    const std::set<std::vector<int>> of_a = clades_of(a, n);
    std::vector<std::int32_t> tree = b;
    {
      const auto_constraint constraint(context, a, b);
      tbr_swap(context, tree, {});
    }
    EXPECT_EQ(context.constraints_in_force, nullptr);
    const std::set<std::vector<int>> result = clades_of(tree, n);
    for (const std::vector<int>& clade : clades_of(b, n)) {
      if (!of_a.contains(clade)) continue;
      ++shared;
      EXPECT_TRUE(result.contains(clade)) << "round " << round;
    }
  }
  EXPECT_GT(shared, 500);
}

TEST_F(search_cycles, without_slots_the_best_tree_is_handed_back) {
  std::mt19937 g(3);
  for (int round = 0; round < 60; ++round) {
    fill(draw(g, 4, 14), g);
    search_session session;
    search_context& context = session.context();
    context.random.seed(static_cast<unsigned>(round));
    const int trees = context.trees.ntrees;
    std::vector<std::int32_t> tree = plain_tree(context, 0);
    const double start = tree_length(context.data, tree);
    ratchet_settings of_ratchet;
    of_ratchet.cycles = {.iterations = 6, .autoconst = round % 3, .fusefreq = 3};
    of_ratchet.automatic = round % 2 == 0;
    drift_settings of_drift;
    of_drift.cycles = {.iterations = 6, .autoconst = round % 3};
    const double ratcheted = ratchet_search(context, tree, of_ratchet, {}).best;
    EXPECT_EQ(tree_length(context.data, tree), ratcheted);
    const double drifted = drift_search(context, tree, of_drift, {}).best;
    EXPECT_EQ(tree_length(context.data, tree), drifted);
    EXPECT_LE(ratcheted, start);
    EXPECT_LE(drifted, ratcheted);
    EXPECT_EQ(context.trees.ntrees, trees);
  }
}

}  // namespace
}  // namespace zeb
