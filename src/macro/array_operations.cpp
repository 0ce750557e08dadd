#include "macro/array_operations.h"
#include "macro/variables.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <numeric>
#include <vector>

#include "base/errors.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/scaling.h"
#include "macro/script_text.h"

namespace zeb {

namespace {

// An operand of a cell-wise operation: an array of the same dimensions, or one number for all
// cells.
struct operand {
  bool constant = true;
  double value = 0;
  whole_array array;
  double at(int i) const { return constant ? value : variable_value(array.first + i); }
};

bool same_sizes(const whole_array& a, const whole_array& b) {
  return std::equal(a.sizes.begin(), a.sizes.end(), b.sizes.begin(), b.sizes.end());
}

void check_same(const whole_array& a, const whole_array& b) {
  if (!same_sizes(a, b)) error_end("Dimensions of arrays to operate do not match!");
}

operand read_operand(const whole_array& target) {
  operand result;
  const int c = skip_blanks_peek();
  if (c == ';') error_end("Value or expression required");
  if (std::isalpha(c)) {
    result.constant = false;
    result.array = read_array_name();
    check_same(target, result.array);
    return result;
  }
  result.value = macro_value();
  return result;
}

enum class cell_operation {
  add,
  subtract,
  multiply,
  divide,
  bit_and,
  bit_or,
  bit_xor,
  smaller,
  larger,
  equal,
  different,
  more,
  less,
  more_equal,
  less_equal,
};

// The operator between two operands; comparisons other than == and != begin with "?".
cell_operation read_cell_operator() {
  const int c = next_nonblank();
  const int next = peek_raw_char();
  switch (c) {
    case '+':
      return cell_operation::add;
    case '-':
      return cell_operation::subtract;
    case '*':
      return cell_operation::multiply;
    case '/':
      return cell_operation::divide;
    case '&':
      return cell_operation::bit_and;
    case '|':
      return cell_operation::bit_or;
    case '^':
      return cell_operation::bit_xor;
    case '<':
    case '>':
      if (next == '=') error_end("Wrong symbol; did you mean \"?>\" or \"?<\"?");
      return c == '<' ? cell_operation::smaller : cell_operation::larger;
    case '=':
      if (next != '=') error_end("Wrong symbol; did you mean \"==\"?");
      read_raw_char();
      return cell_operation::equal;
    case '!':
      if (next != '=') error_end("Wrong symbol; did you mean \"!=\"?");
      read_raw_char();
      return cell_operation::different;
    case '?': {
      if (next != '<' && next != '>') error_end("Wrong symbol; did you mean \"?>\" or \"?<\"?");
      read_raw_char();
      const bool or_equal = peek_raw_char() == '=';
      if (or_equal) read_raw_char();
      if (next == '>') return or_equal ? cell_operation::more_equal : cell_operation::more;
      return or_equal ? cell_operation::less_equal : cell_operation::less;
    }
    default:
      error_end("Expected operator");
  }
}

double operate(cell_operation op, double a, double b) {
  switch (op) {
    case cell_operation::add:
      return a + b;
    case cell_operation::subtract:
      return a - b;
    case cell_operation::multiply:
      return a * b;
    case cell_operation::divide:
      if (b == 0) error_end("Can't divide by zero");
      return a / b;
    case cell_operation::bit_and:
      return value_bits(a) & value_bits(b);
    case cell_operation::bit_or:
      return value_bits(a) | value_bits(b);
    case cell_operation::bit_xor:
      return value_bits(a) ^ value_bits(b);
    case cell_operation::smaller:
      return std::min(a, b);
    case cell_operation::larger:
      return std::max(a, b);
    case cell_operation::equal:
      return a == b;
    case cell_operation::different:
      return a != b;
    case cell_operation::more:
      return a > b;
    case cell_operation::less:
      return a < b;
    case cell_operation::more_equal:
      return a >= b;
    case cell_operation::less_equal:
      return a <= b;
  }
  return 0;
}

// Divisions are checked before any cell is written, so that an error leaves the array as it was.
void store_all(const whole_array& target, const operand& left, cell_operation op,
               const operand& right) {
  std::vector<double> results(static_cast<std::size_t>(target.cells));
  for (int i = 0; i < target.cells; ++i) {
    results[static_cast<std::size_t>(i)] = operate(op, left.at(i), right.at(i));
  }
  for (int i = 0; i < target.cells; ++i)
    store_variable(target.first + i, results[static_cast<std::size_t>(i)]);
}

void fill_at_random(const whole_array& target) {
  const double largest = macro_whole_value();
  if (largest > 32767) error_end("Maximum value for random numbers is 32767");
  if (largest < 0) error_end("Value or expression required");
  check_end();
  const int values = static_cast<int>(largest) + 1;
  for (int i = 0; i < target.cells; ++i)
    store_variable(target.first + i, macros.generator.draw() % values);
}

// `a OP= b`: the compound forms. Returns false, with nothing consumed, where another form comes.
bool operate_in_place(const whole_array& target) {
  const int c = skip_blanks_peek();
  if (c == ';' || std::isalnum(c) || c == '(' || c == '\'') return false;
  next_nonblank();
  const int next = peek_raw_char();
  if (next != '=') {
    unread_char();
    return false;
  }
  if (c == '<' || c == '>')
    error_end("Invalid operator:", std::string(1, static_cast<char>(c)) + "=");
  if (c == '=') error_end("Wrong symbol; did you mean \"==\"?");
  read_raw_char();
  static constexpr std::string_view symbols = "+-*/&|^";
  const std::size_t which = symbols.find(static_cast<char>(c));
  if (which == std::string_view::npos)
    error_end("Invalid operator:", std::string(1, static_cast<char>(c)) + "=");
  operand left;
  left.constant = false;
  left.array = target;
  const operand right = read_operand(target);
  check_end();
  store_all(target, left, static_cast<cell_operation>(which), right);
  return true;
}

}  // namespace

whole_array read_array_name() {
  if (!std::isalpha(skip_blanks_peek()))
    error_end("Arrays must be specified with names, not numbers");
  whole_array array;
  const read_number read = macro_number();
  if (!read.named) error_end("Arrays must be specified with names, not numbers");
  array.number = static_cast<int>(read.value);
  array.name = variable_name(array.number);
  array.sizes = variable_dimensions(array.number);
  array.first = first_data_cell(array.number);
  array.cells = static_cast<int>(data_cell_count(array.sizes));
  return array;
}

whole_array read_one_dimensional_array() {
  whole_array array = read_array_name();
  if (array.sizes.size() != 1)
    error_end_f("Array \"%s\" is not a 1-dimensional array", array.name.c_str());
  return array;
}

void operate_on_arrays() {
  const whole_array target = read_array_name();
  if (operate_in_place(target)) return;
  if (accept_char('*')) {
    fill_at_random(target);
    return;
  }
  const operand left = read_operand(target);
  if (skip_blanks_peek() == ';') {
    for (int i = 0; i < target.cells; ++i) store_variable(target.first + i, left.at(i));
    return;
  }
  const cell_operation op = read_cell_operator();
  const operand right = read_operand(target);
  check_end();
  store_all(target, left, op, right);
}

void sort_array() {
  if (skip_blanks_peek() == ';') error_end("One-dim arrays required");
  const whole_array target = read_one_dimensional_array();
  if (skip_blanks_peek() == ';') error_end("A second (source) variable is required");
  const whole_array source = read_one_dimensional_array();
  check_end();
  if (target.cells != source.cells) {
    error_end_f("Arrays \"%s\" and \"%s\" have different sizes (%s=%i and %s=%i)",
                target.name.c_str(), source.name.c_str(), target.name.c_str(), target.cells,
                source.name.c_str(), source.cells);
  }
  std::vector<int> order(static_cast<std::size_t>(source.cells));
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&source](int a, int b) {
    const double x = variable_value(source.first + a);
    const double y = variable_value(source.first + b);
    return std::isnan(y) ? !std::isnan(x) : x < y;  // what is no number comes last
  });
  for (int i = 0; i < target.cells; ++i)
    store_variable(target.first + i, order[static_cast<std::size_t>(i)]);
}

void scale_distances() {
  const whole_array target = read_array_name();
  const whole_array source = read_array_name();
  const bool square = source.sizes.size() == 2 && source.sizes[0] == source.sizes[1];
  if (!square)
    error_end_f("Array \"%s\" must hold a square matrix of distances", source.name.c_str());
  const int n = source.sizes[0];
  if (target.sizes.size() != 2 || (target.sizes[0] != 2 && target.sizes[0] != 3) ||
      target.sizes[1] != n) {
    error_end_f("Array \"%s\" must have dimensions [2 %i] or [3 %i]", target.name.c_str(), n, n);
  }
  const auto count = static_cast<std::size_t>(n);
  std::vector<double> distances(count * count);
  for (std::size_t i = 0; i < distances.size(); ++i)
    distances[i] = variable_value(source.first + static_cast<int>(i));
  for (std::size_t i = 0; i < count; ++i) {
    if (distances[i * count + i] != 0) error_end("Distances must have a diagonal of zeros");
    for (std::size_t j = 0; j < i; ++j) {
      if (distances[i * count + j] != distances[j * count + i])
        error_end("Distances must be symmetric");
    }
  }
  std::vector<double> weights(count * count, 1.0);
  if (accept_char('/')) {
    const whole_array given = read_array_name();
    const bool per_pair = given.cells == n * n;
    if (!per_pair && given.cells != n)
      error_end_f("Array \"%s\" must have %i or %i values", given.name.c_str(), n, n * n);
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t j = 0; j < count; ++j) {
        // Where the two halves disagree the higher weight holds.
        const std::size_t a = per_pair ? i * count + j : i;
        const std::size_t b = per_pair ? j * count + i : j;
        weights[i * count + j] = std::max(variable_value(given.first + static_cast<int>(a)),
                                          variable_value(given.first + static_cast<int>(b)));
      }
    }
  }
  check_end();
  const auto dims = static_cast<std::size_t>(target.sizes[0]);
  const scaling_result result = scale_by_smacof(distances, weights, count, dims);
  for (std::size_t i = 0; i < result.coordinates.size(); ++i) {
    store_variable(target.first + static_cast<int>(i), result.coordinates[i]);
  }
  macros.regr = result.correlation;
}

void rotate_points() {
  const whole_array points = read_array_name();
  if (points.sizes.size() != 2 || points.sizes[0] != 3)
    error_end("Only x,y,z arrays can be rotated");
  const double tilt = macro_value();
  if (!(tilt >= 0)) error_end("Change in tilt must be >= 0");
  const double rotation = macro_value();
  if (!(rotation >= 0)) error_end("Change in rotation must be >= 0");
  check_end();
  const int n = points.sizes[1];
  const double t = tilt * std::numbers::pi / 180;
  const double r = rotation * std::numbers::pi / 180;
  double least[3] = {INFINITY, INFINITY, INFINITY};
  for (int i = 0; i < n; ++i) {
    const int cell[3] = {points.first + i, points.first + n + i, points.first + 2 * n + i};
    const double x = variable_value(cell[0]);
    const double y = variable_value(cell[1]);
    const double z = variable_value(cell[2]);
    const double y1 = y * std::cos(t) - z * std::sin(t);
    const double z1 = y * std::sin(t) + z * std::cos(t);
    const double rotated[3] = {x * std::cos(r) + z1 * std::sin(r), y1,
                               z1 * std::cos(r) - x * std::sin(r)};
    for (int d = 0; d < 3; ++d) {
      store_variable(cell[d], rotated[d]);
      least[d] = std::min(least[d], variable_value(cell[d]));
    }
  }
  for (int d = 0; d < 3; ++d) {
    for (int i = 0; i < n; ++i) {
      const int cell = points.first + d * n + i;
      store_variable(cell, variable_value(cell) - least[d]);
    }
  }
}

}  // namespace zeb
