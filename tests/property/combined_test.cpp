// The combined search with settings of all kinds: what it tells is what its trees have, the same
// seed leads to the same trees, and on few taxa it ends with the best there is.
#include "search/combined/combined.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "engine/fit/weighting_settings.h"
#include "engine/passes/passes.h"
#include "property/mixed_search.h"
#include "search/search_results.h"
#include "search/search_session.h"
#include "search/store/stored_trees.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;

using combined_searches = zeb_test::mixed_searches;

void fill(int ntax, std::mt19937& g) {
  zeb_test::fill_for_search(ntax, 3, false, "keep 0; hold 60;", g);
  weighting.on = zeb_test::chance(g, 0.3);
}

combined_settings varied_settings(std::mt19937& g) {
  combined_settings options;
  options.hits = draw(g, 1, 3);
  options.replications = draw(g, 1, 3);
  options.update = chance(g, 0.8);
  options.rss = chance(g, 0.7);
  options.css = chance(g, 0.7);
  options.rebuild = chance(g, 0.3) ? draw(g, 1, 4) : 0;
  options.ratchet = draw(g, 0, 4);
  options.drift = draw(g, 0, 4);
  options.hold = draw(g, 1, 5);
  options.autoconst = draw(g, 0, 3);
  options.xmix = chance(g, 0.5);
  options.fuse = draw(g, 0, 2);
  options.hybrid = chance(g, 0.2);
  options.hybrid_factor = 1.5;
  options.picktype = chance(g, 0.2) ? draw(g, 1, 100) : 0;
  options.gfuse = chance(g, 0.3) ? 2 : 0;
  options.dumpfuse = chance(g, 0.7);
  options.retouch = draw(g, 0, 2);
  options.multiply = chance(g, 0.7);
  options.keepall = chance(g, 0.2);
  options.chklevel = chance(g, 0.3) ? 1 : 0;
  return options;
}

combined_result search(search_context& context, combined_settings options, unsigned seed) {
  context.shown.silent = true;
  context.random.seed(seed);
  combined_stages stages;
  stages.sectors.minsize = stages.sectors.maxsize = 6;
  stages.fuse.hybrid.pairings = 5;
  return combined_search(context, options, stages);
}

using tree_list = std::vector<std::vector<std::int32_t>>;

/// The trees in the slots, whose scores are summed anew.
tree_list checked_trees(search_context& context, const combined_result& result) {
  tree_list trees;
  double best = unknown_score;
  for (int t = 0; t < context.trees.ntrees; ++t) {
    fetch_tree(context, slot_tree(context, t));
    trees.emplace_back(context.working_tree.begin(), context.working_tree.end());
    const double score = tree_length(context.data, trees.back());
    EXPECT_NEAR(record_of(context, t).score, score, 1e-8);
    best = std::min(best, score);
  }
  EXPECT_NEAR(result.best, best, 1e-8);
  EXPECT_GE(result.hits, 1);
  return trees;
}

TEST_F(combined_searches, scores_told_are_those_of_the_trees_and_seeds_repeat) {
  std::mt19937 g(1);
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    fill(draw(g, 4, 18), g);
    const combined_settings options = varied_settings(g);
    tree_list first;
    for (const int run : {0, 1}) {
      zeb_test::run_program("keep 0;");
      search_session session;
      const combined_result result = search(session.context(), options, 7);
      const tree_list trees = checked_trees(session.context(), result);
      if (run == 0) first = trees;
      EXPECT_EQ(trees, first);
      EXPECT_EQ(session.context().constraints_in_force, nullptr);
    }
  }
}

TEST_F(combined_searches, few_taxa_end_with_the_best_trees_there_are) {
  std::mt19937 g(2);
  for (int round = 0; round < 25; ++round) {
    SCOPED_TRACE(round);
    fill(draw(g, 6, 9), g);
    zeb_test::run_program("ienum; keep 0;");
    const double best = last_search.best;
    search_session session;
    combined_settings options;
    options.hits = 3;
    EXPECT_NEAR(search(session.context(), options, 3).best, best, 1e-8);
  }
}

TEST(search_levels, effort_follows_failures) {
  combined_settings options;
  sector_settings sector;
  set_level(options, sector, 10, 500);
  EXPECT_EQ(options.replications, 14);
  EXPECT_EQ(options.drift, 36);
  EXPECT_EQ(options.fuse, 10);
  EXPECT_EQ(sector.maxsize, 250);
  EXPECT_EQ(sector.dglobal, 10);
  EXPECT_EQ(adjust_effort(options, sector, 3, 4, true, 500), effort_change::same);
  EXPECT_EQ(adjust_effort(options, sector, 9, 4, true, 500), effort_change::same);  // at the top
  EXPECT_EQ(adjust_effort(options, sector, 0, 4, true, 500), effort_change::less);
  EXPECT_EQ(options.level, 9.75);
  options.moves_level = false;
  EXPECT_EQ(adjust_effort(options, sector, 9, 4, true, 500), effort_change::more);
  EXPECT_EQ(options.level, 9.75);
  EXPECT_EQ(sector.minsize, 56);
  EXPECT_EQ(options.replications, 12);
  EXPECT_EQ(options.fuse, 10);
}

}  // namespace
}  // namespace zeb
