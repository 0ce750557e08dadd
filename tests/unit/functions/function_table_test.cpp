// The table of expression functions agrees with what answers them.
#include "functions/function_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>

namespace zeb {
namespace {

TEST(function_table, every_name_is_told_about_on_lines_that_fit_the_screen) {
  std::set<std::string_view> names;
  for (const function_help& row : function_table()) {
    EXPECT_TRUE(names.insert(row.name).second) << row.name << " stands twice";
    if (row.help.empty()) continue;  // the blank row and the heading
    EXPECT_NE(row.help.find("\n      "), std::string_view::npos) << row.name;
    std::istringstream lines{std::string(row.name) + std::string(row.help)};
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 79u) << line;
  }
}

TEST(function_table, what_answers_has_a_row_or_needs_none) {
  const std::set<std::string_view> rowless = {"absincl",     "contmax",   "contmin",     "logten",
                                              "maxstepsact", "maxtgroup", "minstepsact", "taskvar",
                                              "yes",         "no",        "cancel"};
  std::set<std::string_view> reserved;
  for (const function_help& row : function_table()) reserved.insert(row.name);
  std::set<std::string_view> answered;
  for (const auto rows : all_functions()) {
    for (const function_row& row : rows) {
      EXPECT_TRUE(answered.insert(row.name).second) << row.name << " is answered twice";
      EXPECT_TRUE(reserved.count(row.name) || rowless.count(row.name)) << row.name;
    }
  }
}

}  // namespace
}  // namespace zeb
