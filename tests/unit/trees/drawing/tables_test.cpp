#include "trees/drawing/tables.h"

#include <gtest/gtest.h>

namespace {

using namespace zeb;

TEST(fraction_text, has_the_precision_of_tables) {
  EXPECT_EQ(fraction_text(1.5), "1.50000");
  EXPECT_EQ(fraction_text(1.5, 1), "1.5");
  EXPECT_EQ(fraction_text(no_fraction), "");
}

}  // namespace
