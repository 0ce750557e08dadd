// References to cells, at the limits of arrays and of the store.
#include "macro/variable_reference.h"

#include <gtest/gtest.h>

#include <vector>

#include "macro/assignment.h"
#include "support/macro_session.h"

namespace zeb {
namespace {

using zeb_test::error_of;
using zeb_test::macro_session;

TEST(variable_reference, sections_are_told_from_cells) {
  macro_session macro;
  name_variable(4, "a", std::vector<int>{2, 3, 4});
  macro.read("a a[1] a[1,2] a[ 1 2 3 ] a[0 0 1-3]");
  const int first = first_data_cell(4);
  variable_reference r = read_variable_reference(true);
  EXPECT_TRUE(r.is_section());
  EXPECT_EQ(section_start(r), first);
  EXPECT_EQ(section_sizes(r).size(), 3u);
  r = read_variable_reference(true);
  EXPECT_EQ(section_start(r), first + 12);
  EXPECT_EQ(section_sizes(r).front(), 3);
  r = read_variable_reference(true);
  EXPECT_EQ(section_start(r), first + 20);
  EXPECT_EQ(section_sizes(r).front(), 4);
  r = read_variable_reference(true);
  EXPECT_FALSE(r.is_section());
  EXPECT_EQ(r.cell, first + 23);
  r = read_variable_reference(true);
  EXPECT_TRUE(r.range);
  EXPECT_EQ(r.last - r.cell, 2);
}

TEST(variable_reference, what_lies_outside_is_refused) {
  macro_session macro;
  name_variable(4, "a", std::vector<int>{2, 3});
  for (const char* text :
       {"a[2 0]", "a[0 3]", "a[0-1 0]", "a[0 2-1]", "a[0 1-3]", "a[0 0 0]", "a[]", "a[0;", "a[-1]",
        "-1", "1000000", "99999999999999999999", "nosuch"}) {
    macro.read(text);
    EXPECT_NE(error_of([] { read_variable_reference(true); }), "") << text;
  }
}

TEST(variable_reference, overwritten_index_cells_lead_nowhere_outside_the_store) {
  macro_session macro(1);
  name_variable(0, "a", std::vector<int>{2, 3});
  for (const double place :
       {-5.0, 1e300, double(macros.max_variables), double(macros.max_variables - 1), 0.0 / 0.0}) {
    store_variable(1, place);
    macro.read("a[1 1] a[1]");
    EXPECT_NE(error_of([] { read_variable_reference(true); }), "") << place;
    macro.read("a[1]");
    EXPECT_NE(error_of([] { section_start(read_variable_reference(true)); }), "") << place;
  }
}

// ---- lists written into the target of an assignment ----

TEST(assignment, rows_keep_their_place_in_a_wider_array) {
  macro_session macro;
  name_variable(0, "a", std::vector<int>{2, 3});
  const int first = first_data_cell(0);
  for (int i = 0; i < 6; ++i) store_variable(first + i, -1);
  macro.read("a");
  const variable_reference target = read_variable_reference(false);
  {
    const running_assignment running(target);
    write_rows("Test", std::vector<double>{1, 2, 3, 4}, 2);
    EXPECT_TRUE(assignment.list_written);
    EXPECT_EQ(assignment.list_size, 3);
    EXPECT_NE(error_of([] { write_list("Test", std::vector<double>(6)); }).find("1-dimensional"),
              std::string::npos);
  }
  const double expected[] = {1, 2, -1, 3, 4, -1};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(variable_value(first + i), expected[i]) << i;
  EXPECT_NE(error_of([] { write_list("Test", std::vector<double>(2)); }).find("only to set"),
            std::string::npos);
}

TEST(assignment, lists_end_with_their_target) {
  macro_session macro;
  name_variable(0, "a", std::vector<int>{3});
  name_variable(3, "one", {});
  macro.read("a one 998");
  {
    const running_assignment running(read_variable_reference(false));
    write_list("Test", std::vector<double>{1, 2, 3});
    EXPECT_NE(error_of([] { write_list("Test", std::vector<double>(4)); }), "");
  }
  macro.read("one 998");
  {
    const running_assignment running(read_variable_reference(false));
    EXPECT_NE(error_of([] { write_list("Test", std::vector<double>(1)); }).find("requires arrays"),
              std::string::npos);
  }
  macro.read("994");  // counted from the first free variable, 4
  {
    const running_assignment running(read_variable_reference(false));
    EXPECT_EQ(assignment.room, macros.max_variables - 998);
    write_list("Test", std::vector<double>{7, 8});
    EXPECT_NE(error_of([] { write_list("Test", std::vector<double>(3)); }), "");
  }
  EXPECT_EQ(variable_value(999), 8);
  EXPECT_EQ(variable_value(3), 0);
}

}  // namespace
}  // namespace zeb
