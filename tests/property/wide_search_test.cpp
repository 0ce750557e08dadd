// Searches with characters in wide sets are the same searches as with all of them packed.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "engine/collapsing/collapsing.h"
#include "engine/fit/weighting_settings.h"
#include "property/plain_wide_kind.h"
#include "property/random_matrix.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "support/program.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

class wide_search : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zeb_test::start_program(); }
  void TearDown() override {
    zeb_test::run_program("collapse none; subopt 0; bbreak:nolimit nopreproc mulpars;");
    weighting = {};
    wipe_matrix();
  }
};

struct outcome {
  std::vector<std::vector<std::int32_t>> trees;
  std::string rearrangements;
  double best = 0;
};

outcome run(const std::string& commands) {
  const std::string said =
      zeb_test::run_program("keep 0; hold 40; rseed 3; mult:ras nowcluster; " + commands);
  outcome result;
  for (int t = 0; t < store.ntrees; ++t) {
    const tree_span tree = stored_tree(t);
    result.trees.emplace_back(tree.begin(), tree.end());
  }
  result.rearrangements = rearrangements_text(last_search.rearrangements);
  result.best = last_search.best;
  EXPECT_EQ(said.find("rror"), std::string::npos) << said;
  EXPECT_EQ(said.find("OOpps"), std::string::npos) << said;
  EXPECT_FALSE(result.trees.empty()) << commands << said;
  return result;
}

constexpr const char* searches[] = {
    "collapse none; mult=replic 2 hold 1 wagner;",
    "collapse 1; mult=replic 2 hold 5 spr;",
    "collapse 3; mult=replic 3 hold 5 tbr;",
    "collapse amb; mult=replic 2 hold 3 tbr wcluster 5;",
    "mult=replic 2 hold 2 tbr sas 4;",
    "collapse 4; mult=replic 2 hold 5 tbr; collapse 1; bbreak;",
    "collapse 1; mult=replic 1 hold 1 wagner; bbreak=nomulpars preproc; bbreak:mulpars nopreproc;",
    "mult=replic 1 hold 1 wagner; bbreak=limit 3; bbreak:nolimit;",
    "mult=replic 1 hold 5 spr; subopt 2x0.4; bbreak=spr; subopt 0; bbreak:tbr;",
};

void expect_same(const outcome& wide, const outcome& packed) {
  EXPECT_EQ(wide.trees, packed.trees);
  EXPECT_EQ(wide.rearrangements, packed.rearrangements);
  EXPECT_EQ(wide.best, packed.best);
}

TEST_F(wide_search, is_the_same_as_packed) {
  int searches_of_fits = 0;
  int other_ways = 0;
  for (unsigned seed = 1; seed <= 40; ++seed) {
    std::mt19937 g(seed);
    zeb_test::data_shape shape = zeb_test::random_shape(g, 18, 40);
    shape.ntax = std::max(shape.ntax, 8);
    fill_matrix(shape, g);
    weighting.on = seed % 4 == 0;
    const std::string commands = searches[seed % std::size(searches)];
    SCOPED_TRACE(::testing::Message() << "seed " << seed << ", " << commands);
    const outcome packed = run(commands);
    for (const double share : {1.0, 0.5}) {
      const zeb_test::plain_wide_kind kind(share, g);
      const outcome wide = run(commands);
      if (!weighting.on) {
        expect_same(wide, packed);
        continue;
      }
      // Sums of fits are made in another order, so a few ties are broken another way.
      ++searches_of_fits;
      other_ways += wide.trees != packed.trees;
    }
  }
  EXPECT_LE(4 * other_ways, searches_of_fits);
}

}  // namespace
}  // namespace zeb
