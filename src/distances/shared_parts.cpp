#include "distances/shared_parts.h"

#include <numeric>

namespace zeb {

void shared_parts::add_up() {
  for (std::size_t i = 0; i < rows(); ++i)
    for (std::size_t j = 0; j < columns_; ++j) {
      const number n = cell(i, j);
      by_row_[i].sum += n;
      by_column_[j].sum += n;
      by_row_[i].squares += n * n;
      by_column_[j].squares += n * n;
    }
  for (std::size_t i = 0; i < rows(); ++i)
    for (std::size_t j = 0; j < columns_; ++j) {
      by_row_[i].weighted += cell(i, j) * by_column_[j].sum;
      by_column_[j].weighted += cell(i, j) * by_row_[i].sum;
    }
  for (const line_sums& row : by_row_) {
    all_.sum += row.sum;
    all_.squares += row.squares;
    all_.row_squares += row.sum * row.sum;
  }
  for (const line_sums& column : by_column_) all_.column_squares += column.sum * column.sum;
}

shared_parts::number shared_parts::triplets_alike() const {
  number count = 0;
  for (std::size_t i = 0; i < rows(); ++i)
    for (std::size_t j = 0; j < columns_; ++j) {
      const number n = cell(i, j);
      if (n > 1) count += pairs_of(n) * (all_.sum - by_row_[i].sum - by_column_[j].sum + n);
    }
  return count;
}

shared_parts::number shared_parts::quartets_alike() const {
  number count = 0;
  for (std::size_t i = 0; i < rows(); ++i)
    for (std::size_t j = 0; j < columns_; ++j) {
      const number n = cell(i, j);
      if (n < 2) continue;
      const line_sums& row = by_row_[i];
      const line_sums& column = by_column_[j];
      // The same sums without this row and column.
      const number sum = all_.sum - row.sum - column.sum + n;
      const number squares = all_.squares - row.squares - column.squares + n * n;
      const number row_squares =
          all_.row_squares - 2 * column.weighted + column.squares - (row.sum - n) * (row.sum - n);
      const number column_squares = all_.column_squares - 2 * row.weighted + row.squares -
                                    (column.sum - n) * (column.sum - n);
      count += pairs_of(n) * ((sum * sum - row_squares - column_squares + squares) / 2);
    }
  return count;
}

// Terminals "apart" are counted by inclusion and exclusion: all ordered sets in distinct rows, less
// those with two in one column, and so on. Each term is again such a sum over rows.

shared_parts::number shared_parts::triplets_apart() const {
  number ordered = all_.sum * all_.sum * all_.sum - 3 * all_.row_squares * all_.sum;
  for (const line_sums& row : by_row_) ordered += 2 * row.sum * row.sum * row.sum;
  for (std::size_t j = 0; j < columns_; ++j) {
    const line_sums& column = by_column_[j];
    number with_rest = 0;  // cells squared times the sums of their rows
    number cubes = 0;
    for (std::size_t i = 0; i < rows(); ++i) {
      const number n = cell(i, j);
      with_rest += n * n * by_row_[i].sum;
      cubes += n * n * n;
    }
    ordered -= 3 * (column.sum * column.sum * all_.sum - column.squares * all_.sum -
                    2 * column.weighted * column.sum + 2 * with_rest);
    ordered +=
        2 * (column.sum * column.sum * column.sum - 3 * column.squares * column.sum + 2 * cubes);
  }
  return ordered / 6;
}

/// Two terminals of the column and two of any, in four rows.
shared_parts::number shared_parts::column_with_rest(std::size_t column) const {
  const line_sums& c = by_column_[column];
  number cell2_row = 0, cell_row2 = 0, cell2_row2 = 0;
  for (std::size_t i = 0; i < rows(); ++i) {
    const number n = cell(i, column);
    const number r = by_row_[i].sum;
    cell2_row += n * n * r;
    cell_row2 += n * r * r;
    cell2_row2 += n * n * r * r;
  }
  const number s = all_.sum;
  return c.sum * c.sum * s * s - c.squares * s * s - all_.row_squares * c.sum * c.sum -
         4 * c.weighted * c.sum * s + c.squares * all_.row_squares + 2 * c.weighted * c.weighted +
         4 * (cell2_row * s + cell_row2 * c.sum) - 6 * cell2_row2;
}

/// Three terminals of the column and one of any, in four rows.
shared_parts::number shared_parts::three_of_column(std::size_t column) const {
  const line_sums& c = by_column_[column];
  number cubes = 0, cell2_row = 0, cell3_row = 0;
  for (std::size_t i = 0; i < rows(); ++i) {
    const number n = cell(i, column);
    cubes += n * n * n;
    cell2_row += n * n * by_row_[i].sum;
    cell3_row += n * n * n * by_row_[i].sum;
  }
  const number s = all_.sum;
  return c.sum * c.sum * c.sum * s - 3 * c.squares * c.sum * s - 3 * c.weighted * c.sum * c.sum +
         3 * c.squares * c.weighted + 2 * (cubes * s + 3 * cell2_row * c.sum) - 6 * cell3_row;
}

/// Four of the column, in four rows.
shared_parts::number shared_parts::four_of_column(std::size_t column) const {
  const line_sums& c = by_column_[column];
  number cubes = 0, fourths = 0;
  for (std::size_t i = 0; i < rows(); ++i) {
    const number n = cell(i, column);
    cubes += n * n * n;
    fourths += n * n * n * n;
  }
  const number sum2 = c.sum * c.sum;
  return sum2 * sum2 - 6 * c.squares * sum2 + 3 * c.squares * c.squares + 8 * cubes * c.sum -
         6 * fourths;
}

/// Two of some column and two of some column, perhaps the same one, in four rows.
shared_parts::number shared_parts::two_and_two() const {
  number weighted2 = 0, squares_weighted = 0, squares2 = 0;
  for (const line_sums& row : by_row_) {
    weighted2 += row.weighted * row.weighted;
    squares_weighted += row.squares * row.weighted;
    squares2 += row.squares * row.squares;
  }
  const number p = all_.column_squares;
  return p * p - 2 * all_.squares * p - 4 * weighted2 + all_.squares * all_.squares +
         2 * squared_products() + 8 * squares_weighted - 6 * squares2;
}

/// The sum of the squared products of all rows with all rows, which is that of columns with
/// columns: by whichever takes fewer steps over cells that aren't 0.
shared_parts::number shared_parts::squared_products() const {
  std::vector<std::vector<std::size_t>> in_row(rows()), in_column(columns_);
  for (std::size_t i = 0; i < rows(); ++i)
    for (std::size_t j = 0; j < columns_; ++j)
      if (cell(i, j) != 0) {
        in_row[i].push_back(j);
        in_column[j].push_back(i);
      }
  const auto steps = [](const std::vector<std::vector<std::size_t>>& lines) {
    return std::accumulate(
        lines.begin(), lines.end(), std::size_t{0},
        [](std::size_t sum, const auto& l) { return sum + l.size() * l.size(); });
  };
  const bool by_rows = steps(in_column) <= steps(in_row);
  const auto& outer = by_rows ? in_row : in_column;
  const auto& inner = by_rows ? in_column : in_row;
  const auto value = [&](std::size_t line, std::size_t crossing) {
    return by_rows ? cell(line, crossing) : cell(crossing, line);
  };
  std::vector<number> products(outer.size(), 0);
  std::vector<std::size_t> touched;
  number sum = 0;
  for (std::size_t line = 0; line < outer.size(); ++line) {
    touched.clear();
    for (const std::size_t crossing : outer[line])
      for (const std::size_t other : inner[crossing]) {
        if (products[other] == 0) touched.push_back(other);
        products[other] += value(line, crossing) * value(other, crossing);
      }
    for (const std::size_t other : touched) {
      sum += products[other] * products[other];
      products[other] = 0;
    }
  }
  return sum;
}

shared_parts::number shared_parts::quartets_apart() const {
  const number s2 = all_.sum * all_.sum;
  number cubes = 0, fourths = 0;
  for (const line_sums& row : by_row_) {
    cubes += row.sum * row.sum * row.sum;
    fourths += row.sum * row.sum * row.sum * row.sum;
  }
  number ordered = s2 * s2 - 6 * all_.row_squares * s2 + 3 * all_.row_squares * all_.row_squares +
                   8 * cubes * all_.sum - 6 * fourths;
  ordered += 3 * two_and_two();
  for (std::size_t j = 0; j < columns_; ++j)
    ordered += 8 * three_of_column(j) - 6 * column_with_rest(j) - 6 * four_of_column(j);
  return ordered / 24;
}

}  // namespace zeb
