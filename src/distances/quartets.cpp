#include "distances/quartets.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <span>
#include <vector>

#include "base/indices.h"
#include "distances/shared_terminals.h"

namespace zeb {
namespace {

// All sums are taken modulo 2^64: steps between may go out of range, results don't.
using number = std::uint64_t;

number pairs_of(number n) { return n * (n - 1) / 2; }

/// Terminals shared by the parts around two nodes, with the sums that the counts need.
class shared_parts {
 public:
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

number shared_parts::triplets_alike() const {
  number count = 0;
  for (std::size_t i = 0; i < rows(); ++i)
    for (std::size_t j = 0; j < columns_; ++j) {
      const number n = cell(i, j);
      if (n > 1) count += pairs_of(n) * (all_.sum - by_row_[i].sum - by_column_[j].sum + n);
    }
  return count;
}

number shared_parts::quartets_alike() const {
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

number shared_parts::triplets_apart() const {
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
number shared_parts::column_with_rest(std::size_t column) const {
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
number shared_parts::three_of_column(std::size_t column) const {
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
number shared_parts::four_of_column(std::size_t column) const {
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
number shared_parts::two_and_two() const {
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
number shared_parts::squared_products() const {
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

number shared_parts::quartets_apart() const {
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

// ---- whole trees ----

/// Sets of `k` of the terminals, each in another part.
number sets_of_parts(std::span<const number> parts, std::size_t k) {
  std::vector<number> sets(k + 1, 0);
  sets[0] = 1;
  for (const number part : parts)
    for (std::size_t taken = k; taken > 0; --taken) sets[taken] += sets[taken - 1] * part;
  return sets[k];
}

/// Sizes of the clades around a node, and with `whole` what is below it.
std::vector<number> parts_around(const cut_tree& tree, int node, bool whole) {
  std::vector<number> parts;
  for (const int child : tree.children(node))
    parts.push_back(static_cast<number>(tree.sizes[at(child)]));
  if (whole && node != tree.root())
    parts.push_back(static_cast<number>(tree.terminals - tree.sizes[at(node)]));
  return parts;
}

number unresolved(const cut_tree& tree, std::size_t k) {
  number count = 0;
  for (const int node : tree.outward) count += sets_of_parts(parts_around(tree, node, k == 4), k);
  return count;
}

/// The descendants of the internal nodes, one node after the other.
struct child_columns {
  explicit child_columns(const cut_tree& tree) {
    for (const int node : tree.outward) {
      begin.push_back(children.size());
      for (const int child : tree.children(node)) children.push_back(child);
    }
    begin.push_back(children.size());
  }
  std::vector<std::size_t> begin;
  std::vector<int> children;
};

struct counted_sets {
  number alike = 0;
  number apart = 0;
};

/// The parts of a pair of nodes; `whole`: with what lies outside of each, as the last ones.
void fill_parts(shared_parts& parts, const shared_terminal_rows& shared, const cut_tree& a, int v,
                const cut_tree& b, int w, std::span<const int> columns, bool whole) {
  const bool outside_v = whole && v != a.root();
  const bool outside_w = whole && w != b.root();
  const auto rows = at(a.lists.count[at(v)]);
  parts.start(rows + outside_v, columns.size() + outside_w);
  std::size_t i = 0;
  for (const int child : a.children(v)) {
    const std::int32_t* row = shared.row(child);
    number inside = 0;
    for (std::size_t j = 0; j < columns.size(); ++j) {
      parts.cell(i, j) = static_cast<number>(row[columns[j]]);
      inside += parts.cell(i, j);
      if (outside_v) parts.cell(rows, j) -= parts.cell(i, j);
    }
    if (outside_w) {
      parts.cell(i, columns.size()) = static_cast<number>(a.sizes[at(child)]) - inside;
      if (outside_v) parts.cell(rows, columns.size()) -= parts.cell(i, columns.size());
    }
    ++i;
  }
  if (!outside_v) return;
  for (std::size_t j = 0; j < columns.size(); ++j)
    parts.cell(rows, j) += static_cast<number>(b.sizes[at(columns[j])]);
  if (outside_w)
    parts.cell(rows, columns.size()) += static_cast<number>(b.terminals - b.sizes[at(w)]);
}

/// What two nodes with two descendants each have alike.
class fork_pair {
 public:
  fork_pair(const shared_terminal_rows& shared, const cut_tree& a, int v) : a_(a), v_(v) {
    first_ = a.lists.first[at(v)];
    second_ = a.lists.sibling[at(first_)];
    first_row_ = shared.row(first_);
    second_row_ = shared.row(second_);
  }

  number triplets(const int* columns) const {
    const number m00 = cell(first_row_, columns[0]), m01 = cell(first_row_, columns[1]);
    const number m10 = cell(second_row_, columns[0]), m11 = cell(second_row_, columns[1]);
    return pairs_of(m00) * m11 + pairs_of(m11) * m00 + pairs_of(m01) * m10 + pairs_of(m10) * m01;
  }

  /// What is outside of each of the nodes is a third part. Where two terminals lie in one cell, the
  /// others lie in two of the four cells that share no line with it. A root with two descendants is
  /// a point of a branch, where nothing is resolved.
  number quartets(const cut_tree& b, int w, const int* columns) const {
    if (v_ == a_.root() || w == b.root()) return 0;
    const number m00 = cell(first_row_, columns[0]), m01 = cell(first_row_, columns[1]);
    const number m10 = cell(second_row_, columns[0]), m11 = cell(second_row_, columns[1]);
    const number m02 = size(a_, first_) - m00 - m01, m12 = size(a_, second_) - m10 - m11;
    const number m20 = size(b, columns[0]) - m00 - m10, m21 = size(b, columns[1]) - m01 - m11;
    const number m22 = static_cast<number>(b.terminals) - size(b, w) - m02 - m12;
    return pairs_of(m00) * (m11 * m22 + m12 * m21) + pairs_of(m01) * (m10 * m22 + m12 * m20) +
           pairs_of(m02) * (m10 * m21 + m11 * m20) + pairs_of(m10) * (m01 * m22 + m02 * m21) +
           pairs_of(m11) * (m00 * m22 + m02 * m20) + pairs_of(m12) * (m00 * m21 + m01 * m20) +
           pairs_of(m20) * (m01 * m12 + m02 * m11) + pairs_of(m21) * (m00 * m12 + m02 * m10) +
           pairs_of(m22) * (m00 * m11 + m01 * m10);
  }

 private:
  static number cell(const std::int32_t* row, int column) {
    return static_cast<number>(row[column]);
  }
  static number size(const cut_tree& tree, int node) {
    return static_cast<number>(tree.sizes[at(node)]);
  }

  const cut_tree& a_;
  int v_, first_, second_;
  const std::int32_t *first_row_, *second_row_;
};

counted_sets count_sets(const cut_tree& a, const cut_tree& b, std::size_t k) {
  counted_sets out;
  const bool whole = k == 4;
  shared_terminal_rows shared(a, b);
  const child_columns columns(b);
  shared_parts parts;
  shared.for_each_node([&](int v) {
    const fork_pair forks(shared, a, v);
    const bool is_fork = a.lists.count[at(v)] == 2;
    for (std::size_t i = 0; i < b.outward.size(); ++i) {
      const int w = b.outward[i];
      const std::span<const int> children(columns.children.data() + columns.begin[i],
                                          columns.begin[i + 1] - columns.begin[i]);
      if (is_fork && children.size() == 2) {
        out.alike +=
            whole ? forks.quartets(b, w, children.data()) : forks.triplets(children.data());
        continue;
      }
      fill_parts(parts, shared, a, v, b, w, children, whole);
      parts.add_up();
      out.alike += whole ? parts.quartets_alike() : parts.triplets_alike();
      if (parts.rows() < k || parts.columns() < k) continue;
      out.apart += whole ? parts.quartets_apart() : parts.triplets_apart();
    }
  });
  if (whole) out.alike /= 2;  // each quartet was met from both of its ends
  return out;
}

resolution_counts compare(const cut_tree& a, const cut_tree& b, std::size_t k) {
  const std::vector<number> single(at(a.terminals), 1);
  const counted_sets counted = count_sets(a, b, k);
  resolution_counts out;
  out.all = static_cast<std::int64_t>(sets_of_parts(single, k));
  out.alike = static_cast<std::int64_t>(counted.alike);
  out.neither = static_cast<std::int64_t>(counted.apart);
  out.second = static_cast<std::int64_t>(unresolved(a, k)) - out.neither;
  out.first = static_cast<std::int64_t>(unresolved(b, k)) - out.neither;
  out.different = out.all - out.alike - out.first - out.second - out.neither;
  return out;
}

}  // namespace

resolution_counts compare_triplets(const cut_tree& a, const cut_tree& b) {
  return compare(a, b, 3);
}

resolution_counts compare_quartets(const cut_tree& a, const cut_tree& b) {
  return compare(a, b, 4);
}

}  // namespace zeb
