#include "macro/assignment.h"
#include "macro/variables.h"

#include <cstring>

#include "base/errors.h"
#include "macro/macro_state.h"

namespace zeb {

assignment_state assignment;

namespace {

void check_target(const char* name, int count) {
  if (assignment.target < 0) error_end(name, "can be used only to set a variable");
  if (assignment.is_scalar) {
    if (count < 2) error_end(name, "requires arrays");
    error_end(name, "requires arrays\nCannot store", count, "values in variable",
              variable_name(assignment.target));
  }
}

[[noreturn]] void no_room(const char* name, int count) {
  if (!assignment.is_array)
    error_end("Cannot store", count, "values in variable", assignment.target);
  error_end(name, "has", count, "values, but array can store only", assignment.room);
}

void list_is_written(int last_index) {
  assignment.list_written = true;
  assignment.list_size = last_index;
}

}  // namespace

running_assignment::running_assignment(const variable_reference& target) {
  const std::span<const int> sizes = section_sizes(target);
  assignment.is_array = target.is_section();
  assignment.sizes = sizes;
  assignment.is_array_cell = !assignment.is_array && target.dimensions > 0;
  assignment.is_scalar = macros.protection && target.named && target.dimensions == 0;
  assignment.list_written = false;
  assignment.target = section_start(target);
  if (assignment.is_array) {
    assignment.room = static_cast<int>(data_cell_count(sizes));
  } else if (assignment.is_array_cell) {
    const auto last = static_cast<std::size_t>(target.dimensions) - 1;
    assignment.room = variable_dimensions(target.base)[last] - target.subscript[last];
  } else {
    assignment.room = assignment.is_scalar ? 1 : macros.max_variables - target.cell;
  }
}

double write_list(const char* name, std::span<const double> values) {
  const auto count = static_cast<int>(values.size());
  check_target(name, count);
  if (assignment.sizes.size() > 1 && macros.protection == 2)
    error_end(name, "requires 1-dimensional arrays");
  if (count > assignment.room) no_room(name, count);
  for (int i = 0; i < count; ++i)
    store_variable(assignment.target + i, values[static_cast<std::size_t>(i)]);
  list_is_written(count - 1);
  return count ? values[0] : 0;
}

double write_rows(const char* name, std::span<const double> values, int columns) {
  const auto count = static_cast<int>(values.size());
  check_target(name, count);
  int row_cells = columns;
  if (macros.protection && (assignment.is_array || assignment.is_array_cell)) {
    if (assignment.sizes.size() != 2) error_end(name, "requires 2-dimensional arrays");
    row_cells = assignment.sizes[1];
    if (columns > row_cells || count / columns > assignment.sizes[0]) no_room(name, count);
  } else if (count > assignment.room) {
    no_room(name, count);
  }
  for (int i = 0; i < count; ++i) {
    store_variable(assignment.target + i / columns * row_cells + i % columns,
                   values[static_cast<std::size_t>(i)]);
  }
  list_is_written(count - 1);
  return count ? values[0] : 0;
}

void write_string(const std::string& text) {
  std::memcpy(string_bytes(assignment.target).data(), text.c_str(), text.size() + 1);
  list_is_written(static_cast<int>(text.size()) / variable_cell_size());
}

void set_list_size(int last_index) { assignment.list_size = last_index; }

}  // namespace zeb
