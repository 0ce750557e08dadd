// Statistics over runs of user variables.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <vector>

#include "base/errors.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "language/lexer.h"
#include "macro/assignment.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/scaling.h"
#include "macro/variable_reference.h"
#include "macro/variables.h"

namespace zeb {
namespace {

// Values from a reference on: where they start, and how many belong to its array.
struct value_start {
  std::int64_t cell = 0;
  std::int64_t cells = -1;  // -1: no array, as many as are wanted
};

// An array or row stands for its first data cell; from a single cell on, the rest of the array
// follows.
value_start read_start() {
  const variable_reference reference = read_variable_reference(false);
  value_start start{section_start(reference), -1};
  if (reference.is_section()) {
    start.cells = data_cell_count(section_sizes(reference));
  } else if (reference.dimensions > 0) {
    const std::int64_t before = reference.cell - first_data_cell(reference.base);
    start.cells = data_cell_count(variable_dimensions(reference.base)) - before;
  }
  return start;
}

std::vector<double> values_from(const value_start& start, std::int64_t count) {
  if (count <= 0) error_end("Give number");
  if (start.cell < 0 || start.cell > macros.max_variables - count)
    error_end("Only", macros.max_variables, "variables available");
  if (start.cells >= 0 && count > start.cells) {
    error_end("Cannot take", count, "values from variable", start.cell, "(only", start.cells,
              "are there)");
  }
  std::vector<double> values;
  for (std::int64_t i = 0; i < count; ++i)
    values.push_back(variable_value(static_cast<int>(start.cell + i)));
  return values;
}

// "[start num]", with "+N" after start, and "/num" for num. Without num, all of an array.
std::vector<double> value_run() {
  open_brackets();
  value_start start = read_start();
  if (accept_char('+')) {
    const int shift = whole_argument();
    start.cell += shift;
    if (start.cells >= 0) start.cells = std::max<std::int64_t>(0, start.cells - shift);
  }
  accept_char('/');
  std::int64_t count = start.cells;
  if (skip_blanks_peek() != ']') count = whole_argument();
  close_brackets();
  return values_from(start, count);
}

// Increasing; what is no number comes last.
bool comes_before(double a, double b) { return std::isnan(b) ? !std::isnan(a) : a < b; }

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
            [&](std::size_t a, std::size_t b) { return comes_before(values[a], values[b]); });
  std::vector<double> result(values.size());
  for (std::size_t i = 0; i < order.size();) {
    std::size_t end = i + 1;
    while (end < order.size() && values[order[end]] == values[order[i]]) ++end;
    const double shared =
        static_cast<double>(i + end - 1) / 2;  // equal values share their mean rank
    for (; i < end; ++i) result[order[i]] = shared;
  }
  return result;
}

double rank_correlation() {
  open_brackets();
  const value_start a = read_start();
  accept_char(',');
  const value_start b = read_start();
  std::int64_t count = a.cells;
  if (skip_blanks_peek() != ']') count = whole_argument();
  close_brackets();
  return correlation(ranks(values_from(a, count)), ranks(values_from(b, count)));
}

double interpolated() {
  open_brackets();
  const value_start array = read_start();
  accept_char(',');
  const double place = macro_value();
  close_brackets();
  if (array.cells < 0) error_end("Expression \"intpol\" requires arrays");
  const std::vector<double> values = values_from(array, array.cells);
  if (!(place >= 0) || place > static_cast<double>(values.size() - 1))
    error_end("Variable has only", values.size(), "values");
  const double below = std::floor(place);
  const auto i = static_cast<std::size_t>(below);
  if (place == below) return values[i];
  return values[i] + (place - below) * (values[i + 1] - values[i]);
}

double sorted_list() {
  const std::vector<double> v = value_run();
  std::vector<double> order(v.size());
  std::iota(order.begin(), order.end(), 0.0);
  std::stable_sort(order.begin(), order.end(), [&](double a, double b) {
    return comes_before(v[static_cast<std::size_t>(a)], v[static_cast<std::size_t>(b)]);
  });
  return write_list("Sorted list", order);
}

double variable_size() {
  if (!macros.protection) error_end("Variable \"varsize\" valid only in macro protection mode");
  skip_blanks_peek();
  const variable_reference reference = read_variable_reference(false);
  return static_cast<double>(data_cell_count(section_sizes(reference)));
}

// clang-format off
constexpr expression_function rows[] = {
    {"maxval", "[start num]", "highest of num values from start on, which may be shifted by +N; num (optional for arrays) may be written /num", highest},
    {"minval", "[start num]", "lowest of num values from start on, which may be shifted by +N; num (optional for arrays) may be written /num", lowest},
    {"meanval", "[start num]", "mean of num values from start on, which may be shifted by +N; num (optional for arrays) may be written /num", mean},
    {"stddev", "[start num]", "standard deviation of num values from start on, which may be shifted by +N; num (optional for arrays) may be written /num", standard_deviation},
    {"spearman", "[A B N]", "rank correlation of N values (optional for arrays) from A and from B on", rank_correlation},
    {"intpol", "[A N]", "value of array A at the fractional position N, interpolated", interpolated},
    {"sortlist", "[start num]", "list of the indices of num values from start on (num optional for arrays), in increasing order of the values", sorted_list},
    {"varsize", " xxx", "number of cells of variable xxx", variable_size},
};
// clang-format on

}  // namespace

const std::span<const expression_function> array_functions = rows;

}  // namespace zeb
