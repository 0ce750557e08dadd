// Relative fit differences of moves against the steps of each character on both trees.
#include "search/moves/relative_fit.h"
#include "engine/fit/implied_weighting.h"
#include "engine/fit/weighting_settings.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"
#include "engine/passes/waves.h"
#include "engine/settings.h"
#include "matrix/character_steps.h"
#include "matrix/matrix_layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "engine/packing/packing.h"
#include "property/clipped_trees.h"
#include "property/plain_wide_kind.h"
#include "property/random_matrix.h"
#include "property/random_weighting.h"
#include "support/program.h"

namespace zeb {
namespace {

using zeb_test::draw;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

class relative_fit : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zeb_test::start_program(); }
  static void TearDownTestSuite() {
    engine = {};
    wipe_matrix();
  }
  void TearDown() override { weighting = {}; }
};

naive::rooted_tree tree_in_work(const search_data& data) {
  naive::rooted_tree tree{data.n, {data.tree.anc.begin(), data.tree.anc.end()}};
  tree.parent[at(data.n)] = -1;
  return tree;
}

/// Steps of a character on a tree, in units of the score.
double steps_on(const zeb_test::oracle_matrix& oracle, std::size_t c,
                const naive::rooted_tree& tree) {
  return static_cast<double>(naive::least_steps(tree, oracle.cells[c], oracle.additive[c]));
}
double steps_on(const zeb_test::mixed_matrix& oracle, std::size_t c,
                const naive::rooted_tree& tree) {
  return static_cast<double>(oracle.steps(c, tree)) * (oracle.ranges[c].empty() ? 1 : 0.001);
}

/// What each character costs on a tree, and each set of them under implied weights.
template <class data_matrix>
std::vector<double> costs_on(const data_matrix& oracle, const naive::rooted_tree& tree) {
  const fit_rules rules = current_fit_rules();
  std::vector<double> costs;
  std::vector<double> sums(rules.sets.size(), 0);
  for (std::size_t c = 0; c < oracle.cells.size(); ++c) {
    const auto character = static_cast<int>(c);
    const double unit = matrix.characters[c].is_continuous ? 0.001 : 1;
    const double steps = steps_on(oracle, c, tree);
    const double homoplasy = std::max(0.0, steps - minimum_steps(character) * unit);
    const int set = rules.set_of_character(character);
    if (rules.on && set >= 0)
      sums[at(set)] += oracle.weight[c] * homoplasy;
    else
      costs.push_back(oracle.weight[c] *
                      (rules.on ? rules.character_fit(character, homoplasy) : steps));
  }
  for (std::size_t s = 0; s < sums.size(); ++s)
    costs.push_back(rules.set_fit(static_cast<int>(s), sums[s]));
  return costs;
}

template <class data_matrix>
double oracle_difference(const data_matrix& oracle, const naive::rooted_tree& home,
                         const naive::rooted_tree& other) {
  double for_home = 0;
  double for_other = 0;
  const std::vector<double> before = costs_on(oracle, home);
  const std::vector<double> after = costs_on(oracle, other);
  for (std::size_t i = 0; i < before.size(); ++i) {
    const double more = after[i] - before[i];
    (more > 0 ? for_home : for_other) += more > 0 ? more : -more;
  }
  return for_home > 1e-9 ? (for_home - for_other) / for_home : 0;
}

/// All regrafts of one clip, by its own root.
template <class data_matrix>
void check_regrafts(const data_matrix& oracle, std::mt19937& g) {
  search_data& data = packed_matrix(true);
  const naive::rooted_tree start = naive::random_tree(data.n, g);
  tree_length(data, start.parent);
  const naive::rooted_tree home = tree_in_work(data);
  const int clip = zeb_test::draw_clip(data, g);
  const int sister = data.tree.sister[at(clip)];
  const int joint = detach(data.tree, clip);
  repair_after_clip(data, sister, clip);
  std::vector<int> targets = {data.tree.sister[0]};
  for (std::size_t i = 0; i < targets.size(); ++i) {
    if (targets[i] < data.n) continue;
    targets.push_back(data.tree.first[at(targets[i])]);
    targets.push_back(data.tree.second[at(targets[i])]);
  }
  const join_side own = clip < data.n ? join_side{join_end::root, clip}
                                      : join_side{join_end::branch, data.tree.second[at(clip)]};
  if (data.implied_on) remove_home_steps(data, own, {join_end::branch, sister});
  for (const int target : targets) {
    const double found = relative_fit_difference(data, {own, {join_end::branch, sister}},
                                                 {own, {join_end::branch, target}}, true);
    attach(data.tree, clip, joint, target);
    EXPECT_NEAR(found, oracle_difference(oracle, home, tree_in_work(data)), 1e-6);
    detach(data.tree, clip);
  }
}

/// Every other round under implied weights of some kind.
template <class data_matrix>
void draw_criterion(const data_matrix& oracle, bool user_costs_allowed, int round,
                    std::mt19937& g) {
  weighting = {};
  if (round % 2 == 0) return;
  weighting.on = weighting.data_allow = true;
  zeb_test::run_program(zeb_test::draw_weights(oracle, user_costs_allowed, g).commands);
}

TEST_F(relative_fit, is_that_of_the_two_trees) {
  std::mt19937 g(41);
  for (int round = 0; round < 160; ++round) {
    SCOPED_TRACE(::testing::Message() << "round " << round);
    zeb_test::data_shape shape = zeb_test::random_shape(g, 14, 40);
    shape.ntax = std::max(shape.ntax, 5);
    const zeb_test::oracle_matrix oracle = fill_matrix(shape, g);
    draw_criterion(oracle, true, round, g);
    std::optional<zeb_test::plain_wide_kind> wide;
    if (round % 3 == 0) wide.emplace(0.5, g);
    check_regrafts(oracle, g);
  }
}

TEST_F(relative_fit, is_that_of_the_two_trees_with_characters_of_all_kinds) {
  std::mt19937 g(42);
  for (int round = 0; round < 160; ++round) {
    SCOPED_TRACE(::testing::Message() << "round " << round);
    zeb_test::mixed_shape shape;
    shape.ntax = draw(g, 5, 10);
    shape.continuous = draw(g, 0, 3);
    const zeb_test::mixed_matrix oracle = zeb_test::fill_mixed(shape, g);
    draw_criterion(oracle, false, round, g);
    check_regrafts(oracle, g);
  }
}

}  // namespace
}  // namespace zeb
