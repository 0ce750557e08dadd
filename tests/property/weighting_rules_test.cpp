// Implied weights in all forms that `piwe` and `xpiwe` give them, against the oracle: what reports
// tell, and what searches end with.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "base/scores.h"
#include "engine/fit/fit_rules.h"
#include "engine/fit/fits.h"
#include "engine/fit/weighting_settings.h"
#include "engine/plain/plain_optimisation.h"
#include "property/random_weighting.h"
#include "search/search_results.h"
#include "support/all_trees.h"
#include "support/program.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

class weighting_rules : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zeb_test::start_program(); }
  void TearDown() override {
    zeb_test::run_program("collapse none;");
    weighting = {};
    wipe_matrix();
  }
};

/// Data with characters of all kinds under random weights, set by commands. The last taxon may be
/// inactive.
struct weighted_data {
  zeb_test::mixed_matrix oracle;
  zeb_test::random_weights weights;
};

weighted_data draw_data(std::mt19937& g, int active_taxa) {
  zeb_test::mixed_shape shape;
  shape.ntax = active_taxa + chance(g, 0.3);
  const bool plain_only = chance(g, 0.4);
  shape.plain = draw(g, 1, 6);
  shape.with_costs = plain_only ? 0 : draw(g, 0, 3);
  shape.continuous = plain_only ? 0 : draw(g, 0, 2);
  shape.states = draw(g, 2, 5);
  shape.missing = 0.1 * draw(g, 0, 5);
  weighting = {};
  weighting.on = true;
  weighted_data data{zeb_test::fill_mixed(shape, g), {}};
  for (character_record& record : matrix.characters) {
    record.active = chance(g, 0.9);
    if (chance(g, 0.2)) record.internal_steps = draw(g, 1, 2);
  }
  matrix.characters[0].active = 1;
  if (shape.ntax > active_taxa)
    zeb_test::run_program("taxcode -" + std::to_string(active_taxa) + ";");
  data.weights = zeb_test::draw_weights(data.oracle, plain_only, g);
  const std::string said = zeb_test::run_program(data.weights.commands);
  EXPECT_EQ(said.find("rror"), std::string::npos) << data.weights.commands << said;
  return data;
}

/// A tree without the inactive taxon.
std::vector<tree_node> record_of(const naive::rooted_tree& tree) {
  const int absent = matrix.ntax - tree.terminals;
  std::vector<tree_node> record(at(matrix.nnodes), 0);
  for (int v = 0; v < static_cast<int>(tree.parent.size()); ++v)
    record[at(v < tree.terminals ? v : v + absent)] = tree.parent[at(v)] + absent;
  record[at(matrix.ntax)] = static_cast<tree_node>(tree.parent.size()) + absent;
  return record;
}

naive::rooted_tree tree_of(const_tree_span record, int active_taxa) {
  const int absent = matrix.ntax - active_taxa;
  naive::rooted_tree tree{active_taxa, std::vector<int>(at(record[at(matrix.ntax)] - absent))};
  for (int v = 0; v < static_cast<int>(tree.parent.size()); ++v)
    tree.parent[at(v)] = record[at(v < active_taxa ? v : v + absent)] - absent;
  tree.parent[at(active_taxa)] = -1;
  return tree;
}

TEST_F(weighting_rules, reports_agree_with_the_oracle) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    std::mt19937 g(seed);
    const int ntax = draw(g, 4, 9);
    const weighted_data data = draw_data(g, ntax);
    SCOPED_TRACE(::testing::Message() << "seed " << seed << ": " << data.weights.commands);
    const std::vector<std::uint8_t> characters = scored_characters();
    const fit_rules rules = current_fit_rules();
    plain_optimiser optimiser(characters);
    for (int round = 0; round < 3; ++round) {
      const naive::rooted_tree tree = naive::random_tree(ntax, g);
      optimiser.optimise(record_of(tree), polytomy_kind::hard);
      const double score =
          naive::score(data.weights.how, zeb_test::homoplasy_on(data.oracle, tree));
      ASSERT_NEAR(tree_fit(optimiser, rules, characters, fit_form::cost), score, 1e-9);
      double sum = 0;
      for (const double fit : fit_by_character(optimiser, rules, characters)) sum += fit;
      ASSERT_NEAR(sum, score, 1e-9);
    }
  }
}

TEST_F(weighting_rules, searches_find_all_trees_of_the_best_score) {
  constexpr const char* searches[] = {
      "collapse none; mult=replic 12 hold 1000 tbr; bbreak;",
      "collapse none; mult=replic 12 hold 1000 tbr wcluster 4; mult:nowcluster; bbreak;",
      "collapse none; mult=replic 12 hold 1000 sas 3 spr; mult=ras replic 12 tbr; bbreak;",
      "collapse none; mult=replic 12 hold 1000 tbr; subopt 0.2; bbreak; subopt 0; best;",
      "collapse 3; mult=replic 30 hold 60 tbr;",
  };
  for (unsigned seed = 1; seed <= 200; ++seed) {
    std::mt19937 g(seed);
    const int ntax = draw(g, 5, 6);
    const weighted_data data = draw_data(g, ntax);
    for (character_record& record : matrix.characters)
      if (record.is_sankoff && chance(g, 0.3)) record.user_min_steps = draw(g, 0, 4);
    const char* const commands = searches[seed % std::size(searches)];
    SCOPED_TRACE(::testing::Message()
                 << "seed " << seed << ": " << data.weights.commands << commands);
    const std::string said = zeb_test::run_program(
        "keep 0; hold 2000; rseed 5; mult:ras nowcluster; " + std::string(commands));
    ASSERT_EQ(said.find("rror"), std::string::npos) << said;
    ASSERT_EQ(said.find("OOpps"), std::string::npos) << said;
    double best = no_bound;
    int number = 0;
    naive::for_each_tree(ntax, [&](const naive::rooted_tree& tree) {
      const double score =
          naive::score(data.weights.how, zeb_test::homoplasy_on(data.oracle, tree));
      if (score > best + 1e-9) return;
      number = score < best - 1e-9 ? 1 : number + 1;
      best = std::min(best, score);
    });
    ASSERT_NEAR(last_search.best, best, 1e-9 * (1 + best));
    if (seed % std::size(searches) < std::size(searches) - 1) {
      ASSERT_EQ(store.ntrees, number);
    }
  }
}

// Each accepted move is checked by the swapper itself, which tells of a score that is wrong.
TEST_F(weighting_rules, scores_of_searches_in_more_taxa_are_those_of_the_oracle) {
  constexpr const char* searches[] = {
      "mult=replic 1 hold 1 tbr;",
      "mult=replic 2 hold 5 spr; bbreak=safe; bbreak:nosafe;",
      "mult=replic 1 hold 5 tbr wcluster 6; mult:nowcluster;",
      "mult=replic 1 hold 1 wagner; bbreak=limit 4; bbreak:nolimit;",
      "mult=replic 1 hold 1 wagner cas 3; mult:ras; bbreak=nomulpars preproc; bbreak:mulpars "
      "nopreproc;",
      "mult=replic 1 hold 3 tbr; subopt 0.3x0.6; bbreak; subopt 0; best;",
  };
  for (unsigned seed = 1; seed <= 90; ++seed) {
    std::mt19937 g(seed);
    const int ntax = draw(g, 7, 24);
    const weighted_data data = draw_data(g, ntax);
    const std::string commands = std::string("collapse ") + std::to_string(seed % 5) + ";" +
                                 searches[seed % std::size(searches)];
    SCOPED_TRACE(::testing::Message()
                 << "seed " << seed << ": " << data.weights.commands << commands);
    const std::string said =
        zeb_test::run_program("keep 0; hold 40; rseed 5; mult:ras nowcluster; " + commands);
    ASSERT_EQ(said.find("rror"), std::string::npos) << said;
    ASSERT_EQ(said.find("OOpps"), std::string::npos) << said;
    ASSERT_GT(store.ntrees, 0);
    for (int t = 0; t < store.ntrees; ++t) {
      const naive::rooted_tree tree = tree_of(stored_tree(t), ntax);
      const double score =
          naive::score(data.weights.how, zeb_test::homoplasy_on(data.oracle, tree));
      ASSERT_NEAR(last_search.best, score, 1e-9 * (1 + score));
    }
  }
}

/// The mean difference of what steps cost, each against a first one, over 14 of them.
double mean_difference(double k, double ratio, double matched) {
  const auto cost = [](double c, double h) { return (c * c + c) / ((h + c) * (h + c + 1)); };
  double sum = 0;
  for (int h = 1; h <= 14; ++h) sum += cost(matched, h) / cost(k, ratio * h) - 1;
  return sum / 14;
}

TEST_F(weighting_rules, matched_concavities_make_steps_cost_the_same_on_the_average) {
  for (const double k : {0.01, 0.5, 3.0, 20.0, 999.0}) {
    EXPECT_EQ(matched_concavity(k, 1), k);
    for (const double ratio : {1.1, 2.0, 5.0, 40.0}) {
      const double matched = matched_concavity(k, ratio);
      EXPECT_LT(matched, k);
      EXPECT_NEAR(mean_difference(k, ratio, matched), 0, 1e-6) << k << " " << ratio;
    }
  }
}

}  // namespace
}  // namespace zeb
