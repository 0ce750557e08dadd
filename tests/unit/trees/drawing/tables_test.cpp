#include "trees/drawing/tables.h"

#include <gtest/gtest.h>

namespace {

using namespace zeb;
using lines = std::vector<std::string>;

TEST(framed_list, leaves_out_rows_without_values_and_marks_missing_ones) {
  list_table table{"", lines(23)};
  table.cells[1] = "7";
  table.cells[22] = "1234";
  EXPECT_EQ(framed_list(table, 10, 79),
            lines({
                "--------------------------------------------------------",
                "         0    1    2    3    4    5    6    7    8    9",
                "--------------------------------------------------------",
                "  0 |   --    7   --   --   --   --   --   --   --   --",
                " 20 |   --   -- 1234",
                "--------------------------------------------------------",
            }));
}

TEST(framed_list, takes_fewer_columns_on_narrow_screens) {
  const list_table table{"", lines(6, "123456789")};
  for (const std::string& line : framed_list(table, 10, 40)) EXPECT_LE(line.size(), 40U);
}

TEST(framed_matrix, goes_on_below_when_too_wide) {
  const lines rows{"a", "long"}, columns{"x", "yy"};
  const matrix_table table{"", rows, columns, {"1", "", "333", "4"}};
  EXPECT_EQ(framed_matrix(table, 79), lines({
                                          "----------------",
                                          "          x  yy",
                                          "----------------",
                                          "a    |    1  --",
                                          "long |  333   4",
                                          "----------------",
                                      }));
  EXPECT_EQ(framed_matrix(table, 12).size(), 12U);
}

TEST(dense_forms, have_no_frame) {
  EXPECT_EQ(dense_list({"", {"5", "", "6"}}, 79), lines({"0:5 2:6"}));
  EXPECT_EQ(dense_list({"", {"5", "", "6"}}, 4), lines({"0:5", "2:6"}));
  const lines rows{"a"}, columns{"x", "y"};
  EXPECT_EQ(dense_matrix({"", rows, columns, {"1", ""}}), lines({"- x y", "a 1 --"}));
}

TEST(fraction_text, has_the_precision_of_tables) {
  EXPECT_EQ(fraction_text(1.5), "1.50000");
  EXPECT_EQ(fraction_text(1.5, 1), "1.5");
  EXPECT_EQ(fraction_text(no_fraction), "");
}

}  // namespace
