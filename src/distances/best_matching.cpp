#include "distances/best_matching.h"

#include <limits>

#include "base/indices.h"

namespace zeb {
namespace {

// Rows enter one after the other; each takes the cheapest way of reassigning those before it.
// Rows and columns have prices, so that no value costs less than nothing. Rows and
// columns are counted from 1 here, 0 stands for none.
class assignment {
 public:
  assignment(std::span<const int> values, int rows, int columns, bool turned)
      : values_(values),
        rows_(rows),
        columns_(columns),
        turned_(turned),
        row_price_(at(rows + 1), 0),
        column_price_(at(columns + 1), 0),
        row_of_(at(columns + 1), 0),
        way_(at(columns + 1), 0) {
    for (int row = 1; row <= rows_; ++row) enter(row);
  }
  int row_of(int column) const { return row_of_[at(column)]; }

 private:
  long cost(int row, int column) const {
    const int width = turned_ ? rows_ : columns_;
    const int line = turned_ ? column : row;
    const int place = turned_ ? row : column;
    return -static_cast<long>(values_[at(line - 1) * at(width) + at(place - 1)]);
  }

  void enter(int row) {
    row_of_[0] = row;
    std::vector<long> least(at(columns_ + 1), std::numeric_limits<long>::max());
    std::vector<char> done(at(columns_ + 1), 0);
    int column = 0;
    do {
      done[at(column)] = 1;
      column = cheapest_step(column, least, done);
    } while (row_of_[at(column)] != 0);
    for (; column != 0; column = way_[at(column)])
      row_of_[at(column)] = row_of_[at(way_[at(column)])];
  }

  int cheapest_step(int from, std::vector<long>& least, const std::vector<char>& done) {
    const int row = row_of_[at(from)];
    long step = std::numeric_limits<long>::max();
    int next = 0;
    for (int c = 1; c <= columns_; ++c) {
      if (done[at(c)]) continue;
      const long now = cost(row, c) - row_price_[at(row)] - column_price_[at(c)];
      if (now < least[at(c)]) {
        least[at(c)] = now;
        way_[at(c)] = from;
      }
      if (least[at(c)] < step) {
        step = least[at(c)];
        next = c;
      }
    }
    for (int c = 0; c <= columns_; ++c) {
      if (done[at(c)]) {
        row_price_[at(row_of_[at(c)])] += step;
        column_price_[at(c)] -= step;
      } else {
        least[at(c)] -= step;
      }
    }
    return next;
  }

  std::span<const int> values_;
  int rows_, columns_;
  bool turned_;  // the rows of `values` are columns here
  std::vector<long> row_price_, column_price_;
  std::vector<int> row_of_, way_;  // by column
};

}  // namespace

std::vector<int> best_matching(std::span<const int> values, int rows, int columns) {
  const bool turned = rows > columns;
  const assignment found =
      turned ? assignment(values, columns, rows, true) : assignment(values, rows, columns, false);
  std::vector<int> column_of(at(rows), -1);
  for (int c = 1; c <= (turned ? rows : columns); ++c) {
    const int r = found.row_of(c);
    if (r == 0) continue;
    if (turned)
      column_of[at(c - 1)] = r - 1;
    else
      column_of[at(r - 1)] = c - 1;
  }
  return column_of;
}

}  // namespace zeb
