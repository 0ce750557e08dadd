// The rows of the expression functions, wherever they stand, make one table.
#include "functions/function_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace zeb {
namespace {

TEST(function_table, each_row_says_what_it_takes_and_what_it_gives) {
  std::set<std::string_view> names;
  for (const expression_function* row : all_functions()) {
    EXPECT_TRUE(names.insert(row->name).second) << row->name << " stands twice";
    EXPECT_FALSE(row->help.empty()) << row->name;
    EXPECT_EQ(row->help.find('\n'), std::string_view::npos) << row->name;
    EXPECT_NE(row->help.back(), '.') << row->name;
    const bool bracketed = row->arguments.starts_with('[') && row->arguments.ends_with(']');
    const bool after_blank = row->arguments.starts_with(' ');
    EXPECT_TRUE(row->arguments.empty() || bracketed || after_blank) << row->name;
    if (row->list == function_list::name_only) {
      EXPECT_EQ(row->value, nullptr) << row->name;
    }
  }
}

TEST(function_table, the_list_is_in_alphabetical_order_but_for_rows_with_a_place) {
  const auto list = listed_functions();
  const auto all = all_functions();
  const auto listed = std::count_if(
      all.begin(), all.end(), [](const auto* row) { return row->list != function_list::unlisted; });
  ASSERT_EQ(static_cast<std::size_t>(listed), list.size());
  const expression_function* before = nullptr;  // the last row in alphabetical order
  for (std::size_t i = 0; i < list.size(); ++i) {
    const expression_function& row = *list[i];
    if (!row.listed_after.empty()) {
      EXPECT_EQ(list[i - 1]->name, row.listed_after);
      continue;
    }
    if (before && before->list != function_list::parallel && row.list == function_list::parallel) {
      before = nullptr;
    }
    if (before) {
      EXPECT_LT(before->name, row.name);
    }
    before = &row;
  }
}

TEST(function_table, names_in_the_list_are_kept_from_variables) {
  EXPECT_TRUE(is_function_name("length"));
  EXPECT_TRUE(is_function_name("cutswap"));  // not built yet
  EXPECT_TRUE(is_function_name("absicnl"));
  EXPECT_FALSE(is_function_name("absincl"));
  EXPECT_FALSE(is_function_name("yes"));
  EXPECT_FALSE(is_function_name(""));
  double value = 7;
  EXPECT_FALSE(function_value("absicnl", &value));
  EXPECT_FALSE(function_value("unheard", &value));
  EXPECT_EQ(value, 7);
  EXPECT_TRUE(function_value("yes", &value));
  EXPECT_EQ(value, 1);
}

}  // namespace
}  // namespace zeb
