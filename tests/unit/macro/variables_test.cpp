// Cells, arrays, names and the heap of the macro language.
#include "macro/variables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "support/macro_session.h"

namespace zeb {
namespace {

using zeb_test::error_of;
using zeb_test::macro_session;

// Follows index cells from the base to the cell of the subscripts.
int followed(int base, const std::vector<int>& subscripts) {
  double place = base;
  for (std::size_t d = 0; d < subscripts.size(); ++d) {
    if (d > 0) place = variable_value(static_cast<int>(place));
    place += subscripts[d];
  }
  return static_cast<int>(place);
}

TEST(variables, index_cells_lead_to_each_data_cell_once_in_row_order) {
  macro_session macro;
  for (const std::vector<int>& sizes :
       {std::vector<int>{7}, {2, 3}, {3, 1, 4}, {1, 1, 1}, {2, 3, 2, 2}, {2, 1, 3, 1, 2}}) {
    dename_from(0);
    name_variable(5, "a", sizes);
    const int first = first_data_cell(5);
    const auto cells = static_cast<int>(data_cell_count(sizes));
    EXPECT_EQ(first + cells, 5 + static_cast<int>(array_cells(sizes)));
    std::vector<int> subscripts(sizes.size(), 0);
    for (int i = 0; i < cells; ++i) {
      EXPECT_EQ(followed(5, subscripts), first + i);
      for (std::size_t d = sizes.size(); d-- > 0;) {
        if (++subscripts[d] < sizes[d]) break;
        subscripts[d] = 0;
      }
    }
    EXPECT_EQ(next_free_variable(), first + cells);
  }
}

TEST(variables, names_give_their_place_back_in_whatever_order_they_came) {
  macro_session macro;
  const std::size_t used = macro_memory_used();
  std::mt19937 random(5);
  for (int round = 0; round < 20; ++round) {
    std::vector<int> numbers(30);
    for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<int>(i);
    std::shuffle(numbers.begin(), numbers.end(), random);
    for (const int n : numbers)
      name_variable(n, "v" + std::string(random() % 9, 'x') + std::to_string(n), {});
    const int from = static_cast<int>(random() % 30);
    dename_from(from);
    for (int n = 0; n < 30; ++n) EXPECT_EQ(variable_name(n).empty(), n >= from) << n;
    for (int n = 0; n < from; ++n) EXPECT_EQ(find_variable(variable_name(n)), n);
    dename_from(0);
    EXPECT_EQ(macro_memory_used(), used);
  }
}

TEST(variables, an_array_that_does_not_fit_names_nothing) {
  macro_session macro;
  const std::size_t used = macro_memory_used();
  const std::vector<int> huge = {50000, 50000, 50000};
  EXPECT_NE(error_of([&] { name_variable(0, "huge", huge); }).find("uses"), std::string::npos);
  const std::vector<int> beyond = {macros.max_variables};
  EXPECT_NE(error_of([&] { name_variable(1, "beyond", beyond); }), "");
  EXPECT_NE(error_of([&] { name_variable(2, "length", {}); }).find("reserved"), std::string::npos);
  EXPECT_NE(error_of([&] { name_variable(2, std::string(51, 'n'), {}); }), "");
  EXPECT_EQ(macros.named_count, 0);
  EXPECT_EQ(macro_memory_used(), used);
}

TEST(variables, integer_cells_keep_what_does_not_fit_at_their_ends) {
  zeb_test::run_program("macro-; macfloat -;");
  {
    macro_session macro;
    const double inf = std::numeric_limits<double>::infinity();
    const std::pair<double, double> stored[] = {{1.9, 1},          {-1.9, -1},
                                                {3e9, 2147483647}, {-3e9, -2147483648.0},
                                                {inf, 2147483647}, {-inf, -2147483648.0},
                                                {NAN, 0}};
    for (const auto& [given, kept] : stored) {
      store_variable(1, given);
      EXPECT_EQ(variable_value(1), kept) << given;
    }
    EXPECT_EQ(string_bytes(macros.max_variables - 1).size(), 4u);
  }
  zeb_test::run_program("macfloat =;");
  EXPECT_EQ(value_bits(-1), -1);
  EXPECT_EQ(value_bits(4294967297.0), 1);
  EXPECT_EQ(value_bits(1e30), 0);
  EXPECT_EQ(value_bits(NAN), 0);
}

TEST(variables, values_are_written_as_scripts_compare_them) {
  EXPECT_EQ(value_text(-0.0), "0");
  EXPECT_EQ(value_text(8e15), "8000000000000000");
  EXPECT_EQ(value_text(-3), "-3");
  EXPECT_EQ(value_text(118264581564861424.0), "118264581564861424");
  EXPECT_EQ(value_text(-INFINITY), "-inf");
  EXPECT_EQ(value_text(-NAN), "nan");
}

}  // namespace
}  // namespace zeb
