// Terminals that the parts around a node of one tree share with those around a node of another.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zeb {

/// A row for each part of one node, a column for each of the other, with the sums that the counts
/// of triplets and quartets need. `start`, fill the cells, `add_up`, count.
class shared_parts {
 public:
  /// All sums are taken modulo 2^64: steps between may go out of range, results don't.
  using number = std::uint64_t;
  static number pairs_of(number n) { return n * (n - 1) / 2; }

  void start(std::size_t rows, std::size_t columns) {
    cells_.assign(rows * columns, 0);
    columns_ = columns;
    by_row_.assign(rows, {});
    by_column_.assign(columns, {});
    all_ = {};
  }
  std::size_t rows() const { return by_row_.size(); }
  std::size_t columns() const { return columns_; }
  number& cell(std::size_t row, std::size_t column) { return cells_[row * columns_ + column]; }
  number cell(std::size_t row, std::size_t column) const { return cells_[row * columns_ + column]; }

  void add_up();
  /// Triplets with two terminals in one cell, and one in another row and column.
  number triplets_alike() const;
  /// Quartets with two terminals in one cell, the others in other rows and columns, each in its
  /// own.
  number quartets_alike() const;
  /// Sets of three or four terminals in as many rows and columns.
  number triplets_apart() const;
  number quartets_apart() const;

 private:
  /// Sums over a row or column: of its cells, of their squares, of cells times the sum of the line
  /// that crosses there.
  struct line_sums {
    number sum = 0;
    number squares = 0;
    number weighted = 0;
  };
  number column_with_rest(std::size_t column) const;
  number three_of_column(std::size_t column) const;
  number four_of_column(std::size_t column) const;
  number two_and_two() const;
  number squared_products() const;

  std::vector<number> cells_;
  std::size_t columns_ = 0;
  std::vector<line_sums> by_row_, by_column_;
  struct {
    number sum, squares, row_squares, column_squares;
  } all_{};
};

}  // namespace zeb
