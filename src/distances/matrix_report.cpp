#include "distances/matrix_report.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "distances/matrix_files.h"
#include "language/hooks.h"
#include "language/lexer.h"
#include "trees/drawing/tables.h"
#include "trees/hooks.h"

namespace zeb {
namespace {

constexpr std::size_t widest_matrix_shown = 100;  // trees

std::vector<std::string> tree_labels(const std::vector<int>& numbers, const char* format) {
  std::vector<std::string> labels;
  for (const int number : numbers) labels.push_back(text_of(format, number));
  return labels;
}

struct extreme {
  double value;
  std::pair<int, int> trees;
};

std::string text_of_extreme(const char* name, const extreme& found, int decimals) {
  return text_of(", %s %s (trees %i and %i)", name, fraction_text(found.value, decimals).c_str(),
                 found.trees.first, found.trees.second);
}

void summarise(const tree_matrix& matrix) {
  extreme least{std::numeric_limits<double>::infinity(), {}}, most{-1, {}};
  double sum = 0;
  long pairs = 0;
  for (std::size_t r = 0; r < matrix.rows.size(); ++r)
    for (std::size_t c = matrix.is_square ? r + 1 : 0; c < matrix.columns.size(); ++c) {
      const double value = matrix.values[r * matrix.columns.size() + c];
      const std::pair<int, int> trees{matrix.rows[r], matrix.columns[c]};
      if (std::isnan(value) || trees.first == trees.second) continue;
      ++pairs;
      sum += value;
      if (value < least.value) least = {value, trees};
      if (value > most.value) most = {value, trees};
    }
  if (pairs == 0) {
    emit("No pair of trees shares enough taxa\n");
    return;
  }
  emit("Of ", pairs, pairs == 1 ? " pair" : " pairs", ": mean ",
       fraction_text(sum / static_cast<double>(pairs)),
       text_of_extreme("least", least, matrix.decimals),
       text_of_extreme("most", most, matrix.decimals), "\n");
}

void show_table(const tree_matrix& matrix) {
  const auto rows = tree_labels(matrix.rows, "Tree %i");
  const auto columns = tree_labels(matrix.columns, "%i");
  std::vector<std::string> cells;
  for (const double value : matrix.values) cells.push_back(fraction_text(value, matrix.decimals));
  print_table({matrix.title, rows, columns, cells});
}

void store_in_array(const tree_matrix& matrix, int array) {
  std::vector<double> values = matrix.values;
  for (double& value : values)
    if (std::isnan(value)) value = -1;
  hooks_of_trees.user_arrays.store(array, values, static_cast<int>(matrix.columns.size()));
}

}  // namespace

std::string read_name_of_matrix() {
  if (read_file_name() == 0) error_end("Must give the name of the file for the table");
  return std::string(token());
}

int read_array_of_matrix() {
  if (!macros_on() || !hooks_of_trees.user_arrays.read_name)
    error_end("This option is valid only when macros are enabled");
  return hooks_of_trees.user_arrays.read_name();
}

void report_matrix(const tree_matrix& matrix, const matrix_target& target) {
  const bool is_large = std::max(matrix.rows.size(), matrix.columns.size()) > widest_matrix_shown;
  if (!target.is_given() && !is_large)
    show_table(matrix);
  else
    emit(matrix.title, "\n");
  summarise(matrix);
  if (!target.is_given() && is_large)
    emit("Note: the table has more than ", widest_matrix_shown,
         " trees; \"csv\", \"phylip\" or \"array\" give it\n");
  const auto rows = tree_labels(matrix.rows, "tree_%i");
  const auto columns = tree_labels(matrix.columns, "tree_%i");
  const labelled_matrix labelled{rows, columns, matrix.values};
  if (!target.phylip.empty()) write_phylip_matrix(target.phylip, labelled);
  if (!target.csv.empty()) write_csv_matrix(target.csv, labelled);
  if (target.array >= 0) store_in_array(matrix, target.array);
}

}  // namespace zeb
