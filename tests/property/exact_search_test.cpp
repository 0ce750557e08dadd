// `ienum` finds all trees within the limit: best score and number against all trees there are.
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "engine/collapsing/collapsing.h"
#include "engine/fit/weighting_settings.h"
#include "matrix/character_steps.h"
#include "matrix/matrix_layout.h"
#include "matrix/settings/taxon_settings.h"
#include "property/random_costs.h"
#include "search/exact/implicit_enumeration.h"
#include "search/search_session.h"
#include "search/search_settings.h"
#include "support/all_trees.h"
#include "support/program.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;

class exact_search : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zeb_test::start_program(); }
  void TearDown() override {
    weighting = {};
    collapsing = {};
    set_suboptimal(0, 0);
    wipe_matrix();
  }
};

struct found_trees {
  double best = 0;
  int number = 0;
};

found_trees search(const exact_settings& how, unsigned seed) {
  set_tree_count(store, 0);
  search_session session;
  session.context().random.seed(seed);
  const exact_result result = find_all_best_trees(session.context(), how);
  EXPECT_FALSE(result.overflowed);
  return {result.best, store.ntrees};
}

template <class scoring>
found_trees best_of_all(int ntax, double suboptimal, scoring&& score_of) {
  std::vector<double> scores;
  naive::for_each_tree(ntax,
                       [&](const naive::rooted_tree& tree) { scores.push_back(score_of(tree)); });
  const double best = *std::min_element(scores.begin(), scores.end());
  const auto wanted = std::count_if(scores.begin(), scores.end(),
                                    [&](double s) { return s <= best + suboptimal + 1e-9; });
  return {best, static_cast<int>(wanted)};
}

zeb_test::mixed_shape random_mixture(std::mt19937& g) {
  zeb_test::mixed_shape shape;
  shape.ntax = chance(g, 0.05) ? 8 : draw(g, 4, 7);
  shape.states = chance(g, 0.2) ? draw(g, 5, 12) : draw(g, 2, 4);
  shape.plain = draw(g, 1, 14);
  shape.with_costs = chance(g, 0.5) ? 0 : draw(g, 1, 3);
  shape.continuous = chance(g, 0.7) ? 0 : draw(g, 1, 2);
  shape.missing = 0.1 * draw(g, 0, 5);
  shape.polymorphic = chance(g, 0.5) ? 0 : 0.1 * draw(g, 1, 3);
  return shape;
}

double fit_of(const zeb_test::mixed_matrix& data, const naive::rooted_tree& tree) {
  double sum = 0;
  for (std::size_t c = 0; c < data.cells.size(); ++c) {
    const double unit = data.ranges[c].empty() ? 1.0 : 0.001;
    const double least = unit * static_cast<double>(minimum_steps(static_cast<int>(c)));
    const double h = unit * static_cast<double>(data.steps(c, tree)) - least;
    sum += data.weight[c] * h / (weighting.concavity + h);
  }
  return sum;
}

TEST_F(exact_search, finds_all_trees_of_mixed_data) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    std::mt19937 g(seed);
    const zeb_test::mixed_shape shape = random_mixture(g);
    const zeb_test::mixed_matrix data = fill_mixed(shape, g);
    weighting = {};
    weighting.on = shape.with_costs == 0 && chance(g, 0.3);
    weighting.concavity = std::uniform_real_distribution<double>(0.3, 20)(g);
    const bool fractional = weighting.on || shape.continuous > 0;
    const double suboptimal = chance(g, 0.6) ? 0
                              : fractional   ? 0.01 * draw(g, 1, 100)
                                             : draw(g, 1, 4);
    set_suboptimal(suboptimal, 0);
    set_maxtrees(11000, false);
    const found_trees all = best_of_all(shape.ntax, suboptimal, [&](const auto& tree) {
      return weighting.on ? fit_of(data, tree) : data.length(tree);
    });
    for (const exact_settings& how : {exact_settings{}, exact_settings{.look_ahead = false},
                                      exact_settings{.keep_places = false}}) {
      SCOPED_TRACE(::testing::Message()
                   << "seed " << seed << ", " << shape.ntax << " taxa, fits " << weighting.on
                   << ", look " << how.look_ahead << ", keep " << how.keep_places);
      const found_trees found = search(how, seed);
      EXPECT_NEAR(found.best, all.best, 1e-9 * (1 + all.best));
      EXPECT_EQ(found.number, all.number);
    }
  }
}

}  // namespace
}  // namespace zeb
