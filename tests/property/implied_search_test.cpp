// Searches under implied weights find the best fit there is; and what is bound beside the kernels
// is obeyed by builder and swappers.
#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <vector>

#include "base/random.h"
#include "engine/collapsing/collapsing.h"
#include "engine/fit/weighting_settings.h"
#include "engine/packing/packing.h"
#include "engine/passes/links.h"
#include "matrix/character_steps.h"
#include "matrix/matrix_layout.h"
#include "property/random_matrix.h"
#include "search/drivers/bbreak.h"
#include "search/drivers/mult.h"
#include "search/hooks.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/search_session.h"
#include "search/store/stored_trees.h"
#include "support/all_trees.h"
#include "support/program.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

class special_search : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zeb_test::start_program(); }
  void TearDown() override {
    weighting = {};
    swapping = {};
    collapsing = {};
    randomness.random_insertion = false;
    hooks_of_search.slot_binders.clear();
    wipe_matrix();
  }
};

/// Ways to build and to swap, all of which must lead to the best trees of few taxa.
mult_settings varied_settings(std::mt19937& g, int ntax) {
  mult_settings options;
  options.replications = 12;
  options.hold = draw(g, 0, 3) == 0 ? 1 : 300;
  randomness.random_insertion = false;
  switch (draw(g, 0, 4)) {
    case 0:
      options.addition.look = draw(g, 1, ntax);
      options.addition.rule = draw(g, 0, 2);
      break;
    case 1:
      options.addition.informative = ntax;
      break;
    case 2:
      options.addition.cluster_from = draw(g, 4, ntax);
      break;
    default:
      randomness.random_insertion = chance(g, 0.5);
  }
  swapping = {};
  swapping.cluster_size = draw(g, 3, 15);
  swapping.safe_unclip = chance(g, 0.2);
  swapping.random_clip = chance(g, 0.2);
  swapping.promising_first = draw(g, 0, 1) != 0;
  if (chance(g, 0.2)) swapping.move_limit = 2 * ntax;
  return options;
}

double search(const mult_settings& options, int seed) {
  set_tree_count(store, 0);
  search_session session;
  session.context().random.seed(static_cast<unsigned>(seed));
  mult_search(session.context(), options);
  return swap_stored_trees(session.context(), true).best;
}

/// Least score and number of trees that have it.
template <class scoring>
std::pair<double, int> best_of_all(int ntax, scoring&& score_of) {
  double best = 1e300;
  int number = 0;
  naive::for_each_tree(ntax, [&](const naive::rooted_tree& tree) {
    const double score = score_of(tree);
    if (score > best + 1e-9) return;
    number = score < best - 1e-9 ? 1 : number + 1;
    best = std::min(best, score);
  });
  return {best, number};
}

TEST_F(special_search, implied_weights_lead_to_all_trees_of_best_fit) {
  std::mt19937 g(33);
  for (int round = 0; round < 60; ++round) {
    zeb_test::data_shape shape = zeb_test::random_shape(g, 7, 20);
    shape.ntax = draw(g, 5, 7);
    const zeb_test::oracle_matrix oracle = fill_matrix(shape, g);
    weighting.on = true;
    weighting.concavity = chance(g, 0.3) ? 3.0 : std::uniform_real_distribution<double>(0.3, 20)(g);
    std::vector<long> least;
    for (int c = 0; c < matrix.nchar; ++c) least.push_back(minimum_steps(c));
    const auto [best, number] = best_of_all(shape.ntax, [&](const naive::rooted_tree& tree) {
      double sum = 0;
      for (std::size_t c = 0; c < oracle.cells.size(); ++c) {
        const auto h = static_cast<double>(
            naive::least_steps(tree, oracle.cells[c], oracle.additive[c]) - least[c]);
        sum += oracle.weight[c] * h / (weighting.concavity + h);
      }
      return sum;
    });
    set_maxtrees(11000, false);
    const mult_settings options = varied_settings(g, shape.ntax);
    const std::string when = "round " + std::to_string(round);
    EXPECT_NEAR(search(options, round + 1), best, 1e-9 * (1 + best)) << when;
    EXPECT_EQ(store.ntrees, number) << when;
    collapsing.rule = 1 + round % 3;
    EXPECT_NEAR(search(options, round + 1), best, 1e-9 * (1 + best)) << when;
    EXPECT_LE(store.ntrees, number) << when;
    collapsing.rule = 0;
  }
}

// ---- a group that must be there ----

std::uint32_t wanted_group = 0;  // terminals as bits, without terminal 0

/// Is the group, as far as its terminals are in the tree, whole and apart from all others?
bool has_group(const tree_arrays& tree, int n) {
  std::vector<std::uint32_t> below(tree.anc.size(), 0);
  std::uint32_t present = 0;
  std::vector<int> stack = {n};
  std::vector<int> order;
  while (!stack.empty()) {
    const int v = stack.back();
    stack.pop_back();
    order.push_back(v);
    if (v < n) {
      present |= 1U << v;
      below[at(v)] = 1U << v;
      continue;
    }
    stack.push_back(tree.first[at(v)]);
    stack.push_back(tree.second[at(v)]);
  }
  const std::uint32_t group = wanted_group & present;
  for (auto v = order.rbegin(); v != order.rend(); ++v) {
    if (*v >= n) below[at(*v)] = below[at(tree.first[at(*v)])] | below[at(tree.second[at(*v)])];
    if (below[at(*v)] == group) return true;
  }
  return group == 0;
}

bool breaks_group(const search_data& data, int clip, int root, int target) {
  std::vector<std::int32_t> copies[4] = {{data.tree.anc.begin(), data.tree.anc.end()},
                                         {data.tree.sister.begin(), data.tree.sister.end()},
                                         {data.tree.first.begin(), data.tree.first.end()},
                                         {data.tree.second.begin(), data.tree.second.end()}};
  tree_arrays tree{copies[0], copies[1], copies[2], copies[3]};
  const bool is_added = clip == root && clip < data.n && tree.anc[at(clip)] == 0;
  const int joint = is_added ? tree.anc[at(data.n)] : tree.anc[at(clip)];
  if (root != clip) reroot_links(tree, root, clip);
  if (target != 0) attach(tree, clip, joint, target);
  return !has_group(tree, data.n);
}

TEST_F(special_search, forbidden_moves_are_never_made) {
  std::mt19937 g(34);
  hooks_of_search.slot_binders.push_back(
      [](const search_data&, move_slots& slots) { slots.forbids = breaks_group; });
  for (int round = 0; round < 60; ++round) {
    zeb_test::data_shape shape = zeb_test::random_shape(g, 7, 12);
    shape.ntax = draw(g, 5, 7);
    shape.weights = zeb_test::weighting::one;
    const zeb_test::oracle_matrix oracle = fill_matrix(shape, g);
    std::vector<int> rows(at(shape.ntax));
    std::iota(rows.begin(), rows.end(), 0);
    const int a = draw(g, 1, shape.ntax - 2);
    wanted_group = 1U << a | 1U << draw(g, a + 1, shape.ntax - 1);
    const auto [best, number] = best_of_all(shape.ntax, [&](const naive::rooted_tree& tree) {
      const bool whole = supported_groups(tree, {}, naive::support::always).contains(wanted_group);
      return whole ? static_cast<double>(oracle.length(tree, rows)) : 1e300;
    });
    set_maxtrees(11000, false);
    mult_settings options = varied_settings(g, shape.ntax);
    options.addition.cluster_from = 0;
    const std::string when = "round " + std::to_string(round);
    EXPECT_EQ(search(options, round + 1), best) << when;
    EXPECT_EQ(store.ntrees, number) << when;
  }
}

}  // namespace
}  // namespace zeb
