// Weights and activity that hold for a while: everything is as before afterwards, whatever happened
// in between, and nothing packed for other settings is left.
#include <gtest/gtest.h>

#include <vector>

#include "base/arena.h"
#include "matrix/character_steps.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "matrix/settings/character_settings.h"
#include "matrix/settings/taxon_settings.h"
#include "support/program.h"

namespace zeb {
namespace {

class scopes : public ::testing::Test {
 protected:
  void SetUp() override {
    zeb_test::run_program(
        "nstates num 16; xread 2 6 a 00 b 01 c 11 d 12 e 23 f 24; ccode ] 1 * /3 0;");
  }
  void TearDown() override { wipe_matrix(); }

  static std::vector<int> weights() {
    std::vector<int> found;
    for (const character_record& record : matrix.characters) found.push_back(record.weight);
    return found;
  }
  static std::vector<int> active_characters() {
    std::vector<int> found;
    for (const character_record& record : matrix.characters) found.push_back(record.active);
    return found;
  }
};

const std::vector<std::uint8_t> without_last = {1, 1, 1, 1, 0, 0};

TEST_F(scopes, of_activity_change_what_depends_on_the_taxa_and_change_it_back) {
  EXPECT_EQ(minimum_steps(0), 2);
  {
    const activity_scope fewer(without_last);
    EXPECT_EQ(active_taxa(), 4);
    EXPECT_EQ(minimum_steps(0), 1);
    {
      const activity_scope more(std::vector<std::uint8_t>{1, 1, 1, 1, 1, 0});
      EXPECT_EQ(minimum_steps(0), 2);
    }
    EXPECT_EQ(minimum_steps(0), 1);
  }
  EXPECT_EQ(active_taxa(), 6);
  EXPECT_EQ(minimum_steps(0), 2);
}

TEST_F(scopes, of_weights_take_one_replicate_after_the_other) {
  {
    const weights_scope other;
    other.set_weights(std::vector<std::int32_t>{0, 7});
    other.set_activity(std::vector<std::uint8_t>{0, 1});
    EXPECT_EQ(weights(), (std::vector{0, 7}));
    EXPECT_EQ(active_characters(), (std::vector{0, 1}));
    other.set_weights(std::vector<std::int32_t>{2, 2});
    EXPECT_EQ(weights(), (std::vector{2, 2}));
  }
  EXPECT_EQ(weights(), (std::vector{3, 1}));
  EXPECT_EQ(active_characters(), (std::vector{1, 0}));
}

TEST_F(scopes, are_left_by_errors_as_well) {
  EXPECT_THROW(
      {
        const activity_scope fewer(without_last);
        const weights_scope other;
        other.set_weights(std::vector<std::int32_t>{5, 5});
        throw 1;
      },
      int);
  EXPECT_EQ(active_taxa(), 6);
  EXPECT_EQ(weights(), (std::vector{3, 1}));
}

TEST_F(scopes, leave_other_data_alone) {
  {
    const activity_scope fewer(without_last);
    const weights_scope other;
    other.set_weights(std::vector<std::int32_t>{5, 5});
    zeb_test::run_program("xread 3 5 a 000 b 011 c 111 d 121 e 232; taxcode -4; ccode /9 .;");
  }
  EXPECT_EQ(active_taxa(), 4);
  EXPECT_EQ(weights(), (std::vector{9, 9, 9}));
}

TEST_F(scopes, drop_packed_data_both_ways) {
  lock(&locks.optimisation_lock);
  {
    const activity_scope fewer(without_last);
    EXPECT_EQ(locks.optimisation_lock, 0);
    lock(&locks.optimisation_lock);
  }
  EXPECT_EQ(locks.optimisation_lock, 0);
}

}  // namespace
}  // namespace zeb
