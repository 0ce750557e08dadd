// `ienum` finds all trees within the limit: best score and number against all trees there are.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "engine/fit/weighting_settings.h"
#include "matrix/matrix_layout.h"
#include "matrix/settings/taxon_settings.h"
#include "property/random_weighting.h"
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

/// Data of all kinds, as a user can set them up.
struct random_problem {
  int ntax = 0;  // active
  bool fits = false;
  double suboptimal = 0;
  zeb_test::mixed_matrix data;
  zeb_test::random_weights weights;

  double score(const naive::rooted_tree& tree) const {
    return fits ? naive::score(weights.how, zeb_test::homoplasy_on(data, tree)) : data.length(tree);
  }
};

random_problem draw_problem(std::mt19937& g) {
  const zeb_test::mixed_shape shape = random_mixture(g);
  random_problem p;
  weighting = {};
  p.fits = weighting.on = chance(g, 0.4);
  p.data = fill_mixed(shape, g);
  p.ntax = shape.ntax > 4 && chance(g, 0.3) ? shape.ntax - 1 : shape.ntax;
  std::vector<std::uint8_t> active(static_cast<std::size_t>(shape.ntax), 1);
  if (p.ntax < shape.ntax) active.back() = 0;
  set_active_taxa(active);
  if (shape.with_costs == 0) set_outgroup(draw(g, 0, p.ntax - 1));
  if (p.fits) {
    p.weights = zeb_test::draw_weights(p.data, shape.with_costs + shape.continuous == 0, g);
    const std::string said = zeb_test::run_program(p.weights.commands);
    EXPECT_EQ(said.find("rror"), std::string::npos) << said;
  }
  const bool fractional = p.fits || shape.continuous > 0;
  if (chance(g, 0.4)) p.suboptimal = fractional ? 0.01 * draw(g, 1, 100) : draw(g, 1, 4);
  set_suboptimal(p.suboptimal, 0);
  return p;
}

TEST_F(exact_search, finds_all_trees_of_mixed_data) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    std::mt19937 g(seed);
    const random_problem p = draw_problem(g);
    set_maxtrees(11000, false);
    const found_trees all =
        best_of_all(p.ntax, p.suboptimal, [&](const auto& tree) { return p.score(tree); });
    for (const exact_settings& how : {exact_settings{}, exact_settings{.look_ahead = false},
                                      exact_settings{.keep_places = false}}) {
      SCOPED_TRACE(::testing::Message()
                   << "seed " << seed << ", " << p.ntax << " taxa, " << p.weights.commands
                   << " look " << how.look_ahead << ", keep " << how.keep_places);
      const found_trees found = search(how, seed);
      EXPECT_NEAR(found.best, all.best, 1e-9 * (1 + all.best));
      EXPECT_EQ(found.number, all.number);
    }
  }
}

}  // namespace
}  // namespace zeb
