#include "functions/user_arrays.h"

#include "base/errors.h"
#include "language/hooks.h"
#include "macro/array_operations.h"
#include "macro/assignment.h"
#include "macro/macro_state.h"
#include "macro/variables.h"

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

}  // namespace

int read_user_array() { return read_array_name().number; }

std::vector<double> user_array_values(int number) {
  const whole_array array = array_at(number);
  std::vector<double> values;
  for (int i = 0; i < array.cells; ++i) values.push_back(variable_value(array.first + i));
  return values;
}

void store_user_array(int number, std::span<const double> values, int columns) {
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

bool store_printed_list(std::span<const double> values) {
  const bool still_there =
      macros_on() && macros.table_array >= 0 && !variable_dimensions(macros.table_array).empty();
  if (!still_there) {
    set_table_array(-1);
    return false;
  }
  store_user_array(macros.table_array, values, 1);
  set_list_size(static_cast<int>(values.size()) - 1);
  return true;
}

}  // namespace zeb
