// Matrices of distances as other programs read them.
#pragma once

#include <span>
#include <string>

namespace zeb {

struct labelled_matrix {
  std::span<const std::string> rows;     // names without blanks
  std::span<const std::string> columns;  // the same
  std::span<const double> values;        // row by row; not-a-number: none
};

/// A square matrix: the number of rows, then a row to a line. Errors: a value is missing; what
/// files have.
void write_phylip_matrix(const std::string& file, const labelled_matrix& matrix);
/// Values separated by commas under a head; an empty cell without a value.
void write_csv_matrix(const std::string& file, const labelled_matrix& matrix);

}  // namespace zeb
