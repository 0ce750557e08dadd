// The assignment of rows to columns, each to one at most, whose values have the largest sum.
#pragma once

#include <span>
#include <vector>

namespace zeb {

/// `values`: row by row, none below 0. By row the column, -1 for a row that is left over (only
/// where there are more rows than columns). Time: the square of the smaller number times the larger
/// one.
std::vector<int> best_matching(std::span<const int> values, int rows, int columns);

}  // namespace zeb
