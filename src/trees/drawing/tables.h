// Tables of numbers, as the commands show them: scores by tree, steps by character, matrices.
//
// A list is a table of one value for each element 0 to n-1, shown ten to a row under the units.
// A script can have the values of lists instead (`trees_hooks::take_list`).
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

/// Cell without a value.
constexpr std::int64_t no_value = std::numeric_limits<std::int64_t>::min();
/// The same in tables of fractions (any not-a-number).
constexpr double no_fraction = std::numeric_limits<double>::quiet_NaN();

/// Settings of `tables`. Written by its command.
struct table_state {
  bool dense = false;  // `tables =`: dense form, without a frame
  int precision = -1;  // decimals of fractions, `tables /N`; -1: as many as is customary
};
extern table_state tables;

/// The decimals that fractions have: what the user asked for, else the customary number.
int table_decimals(int customary = 5);

/// A matrix as text.
struct matrix_table {
  std::string_view title;
  std::span<const std::string> row_labels;
  std::span<const std::string> column_labels;  // may be empty
  std::vector<std::string> cells;              // row by row; empty: without a value
};

/// Prints values of elements 0 to n-1, ten in a row.
void print_table(std::string_view title, std::span<const std::int64_t> values);
void print_table(std::string_view title, std::span<const double> values);
/// The same, with `decimals` in place of the precision of `tables /`.
void print_table(std::string_view title, std::span<const double> values, int decimals);
/// Prints a matrix, given row by row; its size is the product of the numbers of labels.
void print_table(std::string_view title, std::span<const std::int64_t> cells,
                 std::span<const std::string> row_labels,
                 std::span<const std::string> column_labels);
void print_table(std::string_view title, std::span<const double> cells,
                 std::span<const std::string> row_labels,
                 std::span<const std::string> column_labels);
/// Prints a matrix that is text already.
void print_table(const matrix_table& table);
/// A fraction with the precision of `tables /`; empty for no value.
std::string fraction_text(double value, int decimals = -1);

}  // namespace zeb
