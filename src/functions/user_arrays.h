// The user's arrays as tree tags, drawings and tables reach them, by number.
#pragma once

#include <span>
#include <vector>

namespace zeb {

/// Reads the name of an array from the input.
int read_user_array();
std::vector<double> user_array_values(int number);
/// Stores rows of `columns` values each; what doesn't fit is an error before anything is written.
void store_user_array(int number, std::span<const double> values, int columns);
/// Stores a list in the array that `maketable +` names, in place of printing it; false without one.
bool store_printed_list(std::span<const double> values);

}  // namespace zeb
