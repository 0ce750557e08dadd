// Matrices of trees by trees: shown, summarised, and put where the user wants them.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "language/options.h"

namespace zeb {

/// Where a matrix goes besides the screen.
struct matrix_target {
  int array = -1;           // the user's; -1 none
  std::string phylip, csv;  // names of files; empty: none
  bool is_given() const { return array >= 0 || !phylip.empty() || !csv.empty(); }
};
std::string read_name_of_matrix();
int read_array_of_matrix();

template <class request>
void read_phylip_target(request& r) {
  r.target.phylip = read_name_of_matrix();
}
template <class request>
void read_csv_target(request& r) {
  r.target.csv = read_name_of_matrix();
}
template <class request>
void read_array_target(request& r) {
  r.target.array = read_array_of_matrix();
}

/// The options that say so, for requests with a member `target`.
template <class request>
constexpr auto phylip_option = form<read_phylip_target<request>>("phylip").argument("file").help(
    "write the table as a PHYLIP matrix of distances");
template <class request>
constexpr auto csv_option = form<read_csv_target<request>>("csv").argument("file").help(
    "write the table as values separated by commas");
template <class request>
constexpr auto array_option = form<read_array_target<request>>("array").argument("name").help(
    "store the table in an array of the user, a row for each tree");

struct tree_matrix {
  std::string title;
  std::vector<int> rows, columns;  // numbers of trees
  bool is_square = true;           // rows and columns are the same, the values symmetric
  std::vector<double> values;      // row by row; no_fraction: none
  int decimals = 0;                // -1: those of `tables /`
};

/// Prints the table, unless it goes elsewhere or is large, and the mean and extremes of the values
/// of different trees; then writes it. Errors: those of files and arrays.
void report_matrix(const tree_matrix& matrix, const matrix_target& target);

}  // namespace zeb
