// Statistics over runs of user variables.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <numeric>
#include <vector>

#include "functions/arguments.h"
#include "functions/function_table.h"
#include "macro/macro_reader.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/scaling.h"
#include "macro/variable_reference.h"
#include "shell/errors.h"
#include "shell/lexer.h"

namespace zeb {
namespace {

// Where a reference to values starts: an array stands for its first data cell.
int first_cell(const variable_reference& reference, int* cells) {
  const bool section = reference.is_section();
  *cells = section ? static_cast<int>(data_cell_count(section_sizes(reference))) : -1;
  return section_start(reference);
}

// "[start num]", with "+N" behind start, and "/num" for num. Without num, all of an array.
std::vector<double> value_run() {
  open_brackets();
  const variable_reference reference = read_variable_reference(false);
  int cells = -1;
  int start = first_cell(reference, &cells);
  if (accept_char('+')) {
    const int shift = whole_argument();
    start += shift;
    cells = cells < 0 ? cells : cells - shift;
  }
  accept_char('/');
  int count = cells;
  if (skip_blanks_peek() != ']') count = whole_argument();
  close_brackets();
  if (count <= 0) error_end("Give number");
  if (start < 0 || start > macros.max_variables - count) {
    error_end("Only", macros.max_variables, "variables available");
  }
  if (reference.dimensions > 0 && count > cells)
    error_end("Variable", reference.base, "has only", cells, "values");
  std::vector<double> values;
  for (int i = 0; i < count; ++i) values.push_back(variable_value(start + i));
  return values;
}

double highest() {
  const std::vector<double> v = value_run();
  return *std::max_element(v.begin(), v.end());
}

double lowest() {
  const std::vector<double> v = value_run();
  return *std::min_element(v.begin(), v.end());
}

double mean_of(const std::vector<double>& v) {
  return std::accumulate(v.begin(), v.end(), 0.0) / static_cast<double>(v.size());
}

double mean() { return mean_of(value_run()); }

// Of a sample: divided by n - 1.
double standard_deviation() {
  const std::vector<double> v = value_run();
  if (v.size() < 2) return 0;
  const double m = mean_of(v);
  double sum = 0;
  for (const double x : v) sum += (x - m) * (x - m);
  return std::sqrt(sum / static_cast<double>(v.size() - 1));
}

std::vector<double> ranks(const std::vector<double>& values) {
  std::vector<std::size_t> order(values.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [&](std::size_t a, std::size_t b) { return values[a] < values[b]; });
  std::vector<double> result(values.size());
  for (std::size_t i = 0; i < order.size();) {
    std::size_t end = i;
    while (end < order.size() && values[order[end]] == values[order[i]]) ++end;
    const double shared =
        static_cast<double>(i + end - 1) / 2;  // equal values share their mean rank
    for (; i < end; ++i) result[order[i]] = shared;
  }
  return result;
}

double rank_correlation() {
  open_brackets();
  int cells_a = -1;
  int cells_b = -1;
  const int a = first_cell(read_variable_reference(false), &cells_a);
  accept_char(',');
  const int b = first_cell(read_variable_reference(false), &cells_b);
  int count = cells_a;
  if (skip_blanks_peek() != ']') count = whole_argument();
  close_brackets();
  const int most = macros.max_variables - std::max(a, b);
  if (count <= 0 || count > most || (cells_a >= 0 && count > cells_a) ||
      (cells_b >= 0 && count > cells_b)) {
    error_end("Give number");
  }
  std::vector<double> x;
  std::vector<double> y;
  for (int i = 0; i < count; ++i) {
    x.push_back(variable_value(a + i));
    y.push_back(variable_value(b + i));
  }
  return correlation(ranks(x), ranks(y));
}

double interpolated() {
  open_brackets();
  int cells = -1;
  const int start = first_cell(read_variable_reference(false), &cells);
  accept_char(',');
  const double place = macro_value();
  close_brackets();
  if (cells < 0) error_end("Expression \"intpol\" requires arrays");
  if (!(place >= 0) || place > cells - 1) error_end("Variable has only", cells, "values");
  const double below = std::floor(place);
  const int i = static_cast<int>(below);
  const double low = variable_value(start + i);
  if (place == below) return low;
  return low + (place - below) * (variable_value(start + i + 1) - low);
}

double sorted_list() {
  const std::vector<double> v = value_run();
  std::vector<double> order(v.size());
  std::iota(order.begin(), order.end(), 0.0);
  std::stable_sort(order.begin(), order.end(), [&](double a, double b) {
    return v[static_cast<std::size_t>(a)] < v[static_cast<std::size_t>(b)];
  });
  return write_list("Sorted list", order);
}

double variable_size() {
  if (!macros.protection) error_end("Variable \"varsize\" valid only in macro protection mode");
  skip_blanks_peek();
  const variable_reference reference = read_variable_reference(false);
  return static_cast<double>(data_cell_count(section_sizes(reference)));
}

constexpr function_row rows[] = {
    {"maxval", highest},
    {"minval", lowest},
    {"meanval", mean},
    {"stddev", standard_deviation},
    {"spearman", rank_correlation},
    {"intpol", interpolated},
    {"sortlist", sorted_list},
    {"varsize", variable_size},
};

}  // namespace

std::span<const function_row> array_functions() { return rows; }

}  // namespace zeb
