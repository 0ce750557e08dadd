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

/// What each character costs on a tree, and each set of them under implied weights.
std::vector<double> costs_on(const zeb_test::oracle_matrix& oracle, const search_data& data,
                             const naive::rooted_tree& tree) {
  const fit_rules rules = current_fit_rules();
  std::vector<double> costs;
  std::vector<double> sums(rules.sets.size(), 0);
  std::vector<std::uint32_t> column(at(data.n));
  for (std::size_t c = 0; c < oracle.cells.size(); ++c) {
    for (int t = 0; t < data.n; ++t) column[at(t)] = oracle.cells[c][at(data.pack_to_taxon[at(t)])];
    const auto character = static_cast<int>(c);
    const long steps = naive::least_steps(tree, column, oracle.additive[c]);
    const auto homoplasy = static_cast<double>(steps - minimum_steps(character));
    const int set = rules.set_of_character(character);
    if (rules.on && set >= 0)
      sums[at(set)] += oracle.weight[c] * homoplasy;
    else
      costs.push_back(oracle.weight[c] * (rules.on ? rules.character_fit(character, homoplasy)
                                                   : static_cast<double>(steps)));
  }
  for (std::size_t s = 0; s < sums.size(); ++s)
    costs.push_back(rules.set_fit(static_cast<int>(s), sums[s]));
  return costs;
}

double oracle_difference(const zeb_test::oracle_matrix& oracle, const search_data& data,
                         const naive::rooted_tree& home, const naive::rooted_tree& other) {
  double for_home = 0;
  double for_other = 0;
  const std::vector<double> before = costs_on(oracle, data, home);
  const std::vector<double> after = costs_on(oracle, data, other);
  for (std::size_t i = 0; i < before.size(); ++i) {
    const double more = after[i] - before[i];
    (more > 0 ? for_home : for_other) += more > 0 ? more : -more;
  }
  return for_home > 1e-9 ? (for_home - for_other) / for_home : 0;
}

TEST_F(relative_fit, is_that_of_the_two_trees) {
  std::mt19937 g(41);
  for (int round = 0; round < 160; ++round) {
    zeb_test::data_shape shape = zeb_test::random_shape(g, 14, 40);
    shape.ntax = std::max(shape.ntax, 5);
    const zeb_test::oracle_matrix oracle = fill_matrix(shape, g);
    weighting = {};
    if (round % 2 == 0) {
      weighting.on = weighting.data_allow = true;
      zeb_test::run_program(zeb_test::draw_weights(oracle, true, g).commands);
    }
    std::optional<zeb_test::plain_wide_kind> wide;
    if (round % 3 == 0) wide.emplace(0.5, g);
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
                                                   {own, {join_end::branch, target}});
      attach(data.tree, clip, joint, target);
      const double expected = oracle_difference(oracle, data, home, tree_in_work(data));
      EXPECT_NEAR(found, expected, data.implied_on ? 1e-6 : 1e-12) << "round " << round;
      detach(data.tree, clip);
    }
  }
}

}  // namespace
}  // namespace zeb
