// The user's arrays as other rooms reach them: tree tags, drawings, tables.
#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "functions/function_table.h"
#include "macro/array_operations.h"
#include "macro/commands.h"
#include "macro/macro_state.h"
#include "shell/errors.h"
#include "shell/input.h"
#include "shell/interpreter.h"
#include "shell/lexer.h"
#include "trees/tables.h"
#include "trees/tags.h"

namespace zeb {
namespace {

whole_array array_at(int number) {
  whole_array array;
  array.number = number;
  array.sizes = variable_dimensions(number);
  array.first = first_data_cell(number);
  array.cells = array.sizes.empty() ? 1 : static_cast<int>(data_cell_count(array.sizes));
  array.name = variable_name(number);
  return array;
}

int read_array() { return read_array_name().number; }

std::vector<double> array_values(int number) {
  const whole_array array = array_at(number);
  std::vector<double> values;
  for (int i = 0; i < array.cells; ++i) values.push_back(variable_value(array.first + i));
  return values;
}

// Row by row; what doesn't fit is an error before anything is written.
void store_array(int number, std::span<const double> values, int columns) {
  const whole_array array = array_at(number);
  if (columns > 1 && (array.sizes.size() != 2 || array.sizes[1] != columns)) {
    error_end_f("Array \"%s\" must have dimensions [N %i]", array.name.c_str(), columns);
  }
  if (static_cast<int>(values.size()) > array.cells) {
    error_end("Cannot store", values.size(), "values in variable", array.name);
  }
  for (std::size_t i = 0; i < values.size(); ++i)
    store_variable(array.first + static_cast<int>(i), values[i]);
}

std::vector<std::string> numbered_labels(int count) {
  std::vector<std::string> labels;
  for (int i = 0; i < count; ++i) labels.push_back(std::to_string(i));
  return labels;
}

std::string read_title() {
  std::string title;
  const bool commas = input.literal_comma;
  input.literal_comma = true;
  skip_blanks_peek();
  for (int c = read_char(); c != ';'; c = read_char()) title += static_cast<char>(c < 32 ? ' ' : c);
  input.literal_comma = commas;
  return title;
}

bool all_whole(const std::vector<double>& values) {
  return std::all_of(values.begin(), values.end(), [](double v) {
    return v >= -9e15 && v <= 9e15 && v == static_cast<double>(static_cast<std::int64_t>(v));
  });
}

}  // namespace

// `maketable ARRAY title;`: a list for one dimension, a matrix for two.
void maketable_command() {
  require_macros();
  const whole_array array = read_array_name();
  if (array.sizes.size() > 2)
    error_end("Tables can be made only of arrays of one or two dimensions");
  std::string title = read_title();
  if (title.empty()) title = array.name;
  const std::vector<double> values = array_values(array.number);
  const std::vector<std::int64_t> whole(values.begin(), values.end());
  const bool integers = all_whole(values);
  if (array.sizes.size() < 2) {
    integers ? print_table(title, std::span<const std::int64_t>(whole))
             : print_table(title, std::span<const double>(values));
    return;
  }
  const std::vector<std::string> rows = numbered_labels(array.sizes[0]);
  const std::vector<std::string> columns = numbered_labels(array.sizes[1]);
  if (integers) {
    print_table(title, std::span<const std::int64_t>(whole), rows, columns);
  } else {
    print_table(title, std::span<const double>(values), rows, columns);
  }
}

void connect_user_arrays() {
  user_arrays.read_name = read_array;
  user_arrays.values = array_values;
  user_arrays.store = store_array;
}

}  // namespace zeb
