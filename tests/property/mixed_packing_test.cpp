// Packed words, costs of changes and ranges of values together, against the oracle: lengths, what
// each place of a clip costs, sets after waves, and what searches end with.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "base/scores.h"
#include "engine/fit/weighting_settings.h"
#include "engine/joining.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"
#include "engine/passes/undo.h"
#include "engine/passes/waves.h"
#include "engine/plain/plain_optimisation.h"
#include "engine/plain/tree_scores.h"
#include "property/clipped_trees.h"
#include "property/random_costs.h"
#include "search/search_results.h"
#include "support/all_trees.h"
#include "support/program.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

class mixed_packing : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zeb_test::start_program(); }
  void TearDown() override {
    zeb_test::run_program("collapse none; subopt 0;");
    weighting = {};
    matrix.decompose_state_trees = true;
    wipe_matrix();
  }
};

zeb_test::mixed_shape random_shape(std::mt19937& g, int most_taxa) {
  zeb_test::mixed_shape shape;
  shape.ntax = draw(g, 4, most_taxa);
  shape.plain = draw(g, 0, 4);
  shape.with_costs = draw(g, 0, 4);
  shape.continuous = draw(g, 0, 3);
  if (shape.plain + shape.with_costs + shape.continuous == 0) shape.with_costs = 1;
  shape.states = chance(g, 0.1) ? draw(g, 9, 20) : draw(g, 2, 6);
  return shape;
}

naive::rooted_tree as_naive(const search_data& data) {
  naive::rooted_tree tree;
  tree.terminals = data.n;
  tree.parent.assign(data.tree.anc.begin(), data.tree.anc.end());
  tree.parent[at(data.n)] = -1;
  return tree;
}

std::vector<word> wide_sets(const search_data& data, int top) {
  std::vector<word> row;
  const auto add = [&row](const word* base, std::size_t words, int v) {
    row.insert(row.end(), base + at(v) * words, base + at(v + 1) * words);
  };
  for (const int v : zeb_test::nodes_below(data, top)) {
    add(data.wide.down, data.wide.down_words, v);
    if (v >= data.n) add(data.wide.final, data.wide.final_words, v);
    if (v != top) add(data.wide.branch, data.wide.branch_words, v);
  }
  return row;
}

/// All places that a clip can go to: each costs more than its home by what the tree gets longer,
/// and none costs less than nothing.
void check_all_places(search_data& data, const zeb_test::mixed_matrix& oracle, std::mt19937& g) {
  const int clip = zeb_test::draw_clip(data, g);
  const int sister = data.tree.sister[at(clip)];
  const double length = oracle.length(as_naive(data));
  const std::vector<word> before = wide_sets(data, data.n);
  begin_undo(data);
  const int joint = detach(data.tree, clip);
  repair_after_clip(data, sister, clip);
  const std::vector<word> main_sets = wide_sets(data, data.n);
  const std::vector<word> clip_sets = wide_sets(data, clip);
  const int home = clip < data.n ? clip : data.tree.second[at(clip)];
  const auto cost_of = [&](int u, int v) {
    const join_side side{clip < data.n ? join_end::root : join_end::branch, u};
    return join_cost(data, side, {join_end::branch, v}, no_bound);
  };
  const double home_cost = cost_of(home, sister);
  struct place {
    int u, v;
    double cost;
  };
  std::vector<place> places;
  for (const int u : zeb_test::nodes_below(data, clip)) {
    if (u == clip && clip >= data.n) continue;
    for (const int v : zeb_test::nodes_below(data, data.n))
      if (v != data.n && v != 0) places.push_back({u, v, cost_of(u, v)});
  }
  if (undo_sets(data)) {
    attach(data.tree, clip, joint, sister);
    ASSERT_EQ(before, wide_sets(data, data.n)) << "clip undone";
    detach(data.tree, clip);
  }
  end_undo(data);
  full_pass(data);
  subtree_pass(data, clip);
  ASSERT_EQ(main_sets, wide_sets(data, data.n)) << "main tree";
  ASSERT_EQ(clip_sets, wide_sets(data, clip)) << "clip";
  const auto arrays = [&data] {
    return std::array{data.tree.anc, data.tree.sister, data.tree.first, data.tree.second};
  };
  std::vector<std::vector<std::int32_t>> links;
  for (const auto& array : arrays()) links.emplace_back(array.begin(), array.end());
  std::shuffle(places.begin(), places.end(), g);
  for (std::size_t i = 0; i < places.size(); ++i) {
    const place& p = places[i];
    ASSERT_GE(p.cost, 0.0);
    if (i > 6) continue;  // the oracle is slow
    if (p.u != clip) reroot_links(data.tree, p.u, clip);
    attach(data.tree, clip, joint, p.v);
    ASSERT_NEAR(oracle.length(as_naive(data)) - length, p.cost - home_cost, 1e-9)
        << "clip " << clip << " rooted at " << p.u << " put on " << p.v;
    for (std::size_t k = 0; k < links.size(); ++k)
      std::copy(links[k].begin(), links[k].end(), arrays()[k].begin());
  }
  // The last one is made by waves.
  full_pass(data);
  subtree_pass(data, clip);
  const place& last = places[at(draw(g, 0, static_cast<int>(places.size()) - 1))];
  if (last.u != clip) reroot_subtree(data, last.u, clip);
  attach(data.tree, clip, joint, last.v);
  repair_after_insert(data, clip);
  const std::vector<word> moved = wide_sets(data, data.n);
  full_pass(data);
  ASSERT_EQ(moved, wide_sets(data, data.n)) << "moved";
}

TEST_F(mixed_packing, agrees_with_the_oracle) {
  for (unsigned seed = 1; seed <= 250; ++seed) {
    std::mt19937 g(seed);
    SCOPED_TRACE(::testing::Message() << "seed " << seed);
    const zeb_test::mixed_shape shape = random_shape(g, 9);
    const zeb_test::mixed_matrix oracle = zeb_test::fill_mixed(shape, g);
    matrix.decompose_state_trees = chance(g, 0.7);
    search_data& data = packed_matrix(true);
    const naive::rooted_tree tree = naive::random_tree(data.n, g);
    std::vector<std::int32_t> anc(tree.parent.begin(), tree.parent.end());
    anc[at(data.n)] = data.nodes;
    ASSERT_NEAR(tree_length(data, anc), oracle.length(tree), 1e-9);
    if (data.has_wide && data.n > 4) {
      ASSERT_NO_FATAL_FAILURE(check_all_places(data, oracle, g));
    }
  }
}

double best_of_all(const zeb_test::mixed_matrix& oracle, int ntax) {
  double best = no_bound;
  naive::for_each_tree(
      ntax, [&](const naive::rooted_tree& tree) { best = std::min(best, oracle.length(tree)); });
  return best;
}

TEST_F(mixed_packing, searches_find_the_best_trees_and_tell_their_score) {
  constexpr const char* searches[] = {
      "collapse none; mult=replic 6 hold 60 tbr;",
      "collapse none; mult=replic 8 hold 20 spr; bbreak;",
      "collapse 1; mult=replic 6 hold 60 tbr ras wcluster 4; mult:nowcluster;",
      "collapse 3; mult=replic 6 hold 60 sas 3 tbr; mult:ras; bbreak;",
      "collapse none; subopt 1; mult=replic 6 hold 200 tbr; bbreak; subopt 0; best;",
  };
  for (unsigned seed = 1; seed <= 60; ++seed) {
    std::mt19937 g(seed);
    zeb_test::mixed_shape shape = random_shape(g, 6);
    shape.ntax = 6;
    const zeb_test::mixed_matrix oracle = zeb_test::fill_mixed(shape, g);
    const char* const commands = searches[seed % std::size(searches)];
    SCOPED_TRACE(::testing::Message() << "seed " << seed << ", " << commands);
    const std::string said =
        zeb_test::run_program("keep 0; hold 500; rseed 5; " + std::string(commands));
    EXPECT_EQ(said.find("rror"), std::string::npos) << said;
    EXPECT_EQ(said.find("OOpps"), std::string::npos) << said;
    const double best = best_of_all(oracle, shape.ntax);
    EXPECT_NEAR(last_search.best, best, 1e-6);
    ASSERT_GT(store.ntrees, 0);
    for (int t = 0; t < store.ntrees; ++t) {
      const tree_span record = stored_tree(t);
      naive::rooted_tree tree{shape.ntax, std::vector<int>(record.begin(), record.end())};
      tree.parent[at(shape.ntax)] = -1;
      EXPECT_NEAR(oracle.length(tree), best, 1e-6);
    }
  }
}

/// Scores of all trees of the taxa, as reports tell them.
double best_fit(int ntax) {
  const std::vector<std::uint8_t> characters = scored_characters();
  plain_optimiser optimiser(characters);
  double best = no_bound;
  naive::for_each_tree(ntax, [&](const naive::rooted_tree& tree) {
    std::vector<tree_node> record(tree.parent.begin(), tree.parent.end());
    record[at(ntax)] = 2 * ntax - 1;
    optimiser.optimise(record, polytomy_kind::hard);
    best = std::min(best, tree_score(optimiser, current_fit_rules(), characters));
  });
  return best;
}

TEST_F(mixed_packing, searches_by_fit_end_with_the_score_that_reports_tell) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    std::mt19937 g(seed);
    zeb_test::mixed_shape shape = random_shape(g, 6);
    shape.ntax = 6;
    zeb_test::fill_mixed(shape, g);
    for (character_record& record : matrix.characters) {
      if (record.is_sankoff && chance(g, 0.3)) record.user_min_steps = draw(g, 0, 4);
      if (chance(g, 0.2)) record.internal_steps = draw(g, 1, 2);
    }
    weighting.on = true;
    weighting.concavity = draw(g, 1, 8);
    SCOPED_TRACE(::testing::Message() << "seed " << seed);
    const std::string said = zeb_test::run_program(
        "keep 0; hold 500; rseed 5; collapse none; mult=replic 8 hold 40 tbr; bbreak;");
    EXPECT_EQ(said.find("rror"), std::string::npos) << said;
    EXPECT_EQ(said.find("OOpps"), std::string::npos) << said;
    EXPECT_NEAR(last_search.best, best_fit(shape.ntax), 1e-6);
  }
}

}  // namespace
}  // namespace zeb
