// Scoring commands where a setting decides that no command can change yet: constraints, implied
// weights.
#include <gtest/gtest.h>

#include "engine/fit/weighting_settings.h"
#include "engine/search_data.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "support/program.h"
#include "trees/hooks.h"

namespace zeb {
namespace {

/// Lengths 2, 3 and 4; homoplasies by character 0 0, 1 0 and 1 1.
constexpr const char* three_trees =
    "xread 2 5 a 00 b 00 c 10 d 11 e 11; tread (a (b (c (d e)))) * (a (c (b (d e)))) * "
    "(a (d (b (c e))));";

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

class score_commands : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zeb_test::start_program(); }
  void SetUp() override { zeb_test::run_program(three_trees); }
  void TearDown() override {
    weighting.on = false;
    hooks_of_trees.constraints = {};
    wipe_matrix();
  }
};

TEST_F(score_commands, best_among_the_trees_that_satisfy_constraints) {
  constraint_filter filter;
  filter.active = [] { return true; };
  filter.satisfies = [](int tree) { return tree > 0; };
  hooks_of_trees.constraints = filter;
  EXPECT_EQ(zeb_test::run_program("best [;"),
            "Best score: 3, 2 trees discarded, 1 trees retained (all fulfill constraints)\n");
  zeb_test::run_program(three_trees);
  filter.satisfies = [](int) { return false; };
  hooks_of_trees.constraints = filter;
  EXPECT_EQ(zeb_test::run_program("best [ 1;"),
            "Best score: 2, 1 trees discarded, 2 trees retained (none fulfills constraints)\n");
  zeb_test::run_program(three_trees);
  EXPECT_EQ(zeb_test::run_program("unique;"),
            "0 trees discarded, 3 trees retained (none fulfills constraints)\n");
  filter.satisfies = [](int tree) { return tree == 1; };
  hooks_of_trees.constraints = filter;
  EXPECT_EQ(zeb_test::run_program("unique;"),
            "2 trees discarded, 1 trees retained (all fulfill constraints)\n");
  filter.active = [] { return false; };
  hooks_of_trees.constraints = filter;
  EXPECT_TRUE(contains(zeb_test::run_program("best [;"), "There are no constraints in use"));
}

TEST_F(score_commands, under_implied_weights_scores_are_fits_and_lengths_steps) {
  weighting.on = true;
  EXPECT_TRUE(contains(zeb_test::run_program("scores;"), "0.00000 0.25000 0.50000"));
  EXPECT_TRUE(contains(zeb_test::run_program("scores *;"), "2.00000 1.75000 1.50000"));
  EXPECT_TRUE(contains(zeb_test::run_program("length;"), " 2   3   4"));
  EXPECT_TRUE(weighting.on);
  const std::string by_character = zeb_test::run_program("cscores 1;");
  EXPECT_TRUE(contains(by_character, "Tree 1, total adjusted homoplasy 0.250000"));
  EXPECT_TRUE(contains(by_character, "0.25000 0.00000"));
  EXPECT_EQ(zeb_test::run_program("best 0.3;"),
            "Best score: 0.00000, 1 trees discarded, 2 trees retained\n");
}

}  // namespace
}  // namespace zeb
