// `maketable A title;`, `maketable =N A title;`, `maketable * A B title;`, `maketable + A;`,
// `maketable -;`: arrays shown as tables, and printed tables taken into arrays.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "base/errors.h"
#include "console/output.h"
#include "console/settings.h"
#include "functions/commands.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/array_operations.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/variable_reference.h"
#include "macro/variables.h"
#include "trees/drawing/tables.h"

namespace zeb {
namespace {

std::string read_title() {
  std::string title;
  const comma_reading commas(true);
  skip_blanks_peek();
  for (int c = read_char(); c != ';'; c = read_char()) title += static_cast<char>(c < 32 ? ' ' : c);
  return title;
}

void check_one_dimension(std::span<const int> sizes) {
  if (sizes.size() != 1) error_end("Scripting tables require one-dimensional arrays as input");
}

// By name or number; also a row of an array.
whole_array read_table_array() {
  const int next = skip_blanks_peek();
  if (!std::isalnum(next) && next != '(')
    error_end("Expected name/number of the variable to show as table");
  const variable_reference reference = read_variable_reference(false);
  whole_array array;
  array.number = reference.cell;
  array.sizes = section_sizes(reference);
  check_one_dimension(array.sizes);
  array.first = section_start(reference);
  array.cells = array.sizes[0];
  array.name = variable_name(reference.base);
  return array;
}

// Cells below 0 stand for "no value".
std::vector<double> shown_values(const whole_array& array) {
  std::vector<double> values;
  for (int i = 0; i < array.cells; ++i) {
    const double value = variable_value(array.first + i);
    values.push_back(value >= 0 ? value : no_fraction);
  }
  return values;
}

bool all_whole(const std::vector<double>& values) {
  return std::all_of(values.begin(), values.end(),
                     [](double v) { return std::isnan(v) || (v <= 9e15 && v == std::floor(v)); });
}

void print_array(const std::string& title, const std::vector<double>& values) {
  if (!all_whole(values)) {
    print_table(title, std::span<const double>(values));
    return;
  }
  std::vector<std::int64_t> whole;
  for (const double v : values)
    whole.push_back(std::isnan(v) ? no_value : static_cast<std::int64_t>(v));
  print_table(title, std::span<const std::int64_t>(whole));
}

// Two arrays side by side, a row for each cell.
void print_double_table() {
  if (!macros.integer_only) error_end("Double tables allowed only under integer mode");
  const whole_array a = read_table_array();
  const whole_array b = read_table_array();
  if (a.cells != b.cells) error_end("Dimensions of arrays to operate do not match!");
  const std::string title = read_title();
  std::vector<std::int64_t> cells;
  std::vector<std::string> rows;
  for (int i = 0; i < a.cells; ++i) {
    rows.push_back(std::to_string(i));
    for (const whole_array* array : {&a, &b}) {
      const double v = variable_value(array->first + i);
      cells.push_back(v >= 0 ? static_cast<std::int64_t>(v) : no_value);
    }
  }
  const std::vector<std::string> columns = {a.name, b.name};
  print_table(title, std::span<const std::int64_t>(cells), rows, columns);
}

}  // namespace

void maketable_command() {
  require_macros();
  no_timing();
  if (macros.protection == 0) error_end("Scripting tables not allowed under macro protection 0");
  if (accept_char('-')) {
    check_end();
    set_table_array(-1);
    return;
  }
  if (accept_char('+')) {
    const whole_array array = read_array_name();
    check_end();
    check_one_dimension(array.sizes);
    set_table_array(array.number);
    if (settings.report)
      report_line("Table values will be copied to array instead of written to screen");
    return;
  }
  if (accept_char('*')) {
    print_double_table();
    return;
  }
  int most = -1;
  if (accept_char('=')) {
    most = read_int();
    if (most < 1) error_end("Expected max. table width after '='");
  }
  const whole_array array = read_table_array();
  std::vector<double> values = shown_values(array);
  if (most > 0 && static_cast<int>(values.size()) > most)
    values.resize(static_cast<std::size_t>(most));
  const std::string title = read_title();
  print_array(title.empty() ? array.name : title, values);
}

}  // namespace zeb
