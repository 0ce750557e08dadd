#include "macro/variables.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "console/output.h"
#include "macro/hooks.h"

namespace zeb {

namespace {

std::string sizes_text(std::span<const int> sizes) {
  std::string text;
  for (const int size : sizes) text += (text.empty() ? "" : " x ") + std::to_string(size);
  return text;
}

}  // namespace

int var_shift() { return macros.frames.back().shift; }

void check_variable(double number) {
  if (!(number >= 0))
    error_end("No variable number", std::isfinite(number) ? text_of("%g", number) : "?");
  if (number >= macros.max_variables)
    error_end("Only", macros.max_variables, "variables available");
}

double variable_value(int number) {
  return macros.integer_only ? macros.int_values[number] : macros.real_values[number];
}

void store_variable(int number, double value) {
  if (!macros.integer_only) {
    macros.real_values[number] = value;
    return;
  }
  // What doesn't fit an int is kept at its ends, so that no conversion is undefined.
  if (!(value > -2147483648.0)) value = std::isnan(value) ? 0 : -2147483648.0;
  if (value > 2147483647.0) value = 2147483647.0;
  macros.int_values[number] = static_cast<std::int32_t>(value);
}

std::int32_t value_bits(double value) {
  if (!(std::fabs(value) < 9.2e18)) return 0;
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::int64_t>(value)));
}

int variable_cell_size() { return macros.integer_only ? 4 : 8; }

std::span<char> string_bytes(int number) {
  const auto first = static_cast<std::size_t>(number);
  const auto cells = static_cast<std::size_t>(macros.max_variables) - first;
  if (macros.integer_only) return {reinterpret_cast<char*>(macros.int_values + first), cells * 4};
  return {reinterpret_cast<char*>(macros.real_values + first), cells * 8};
}

std::string variable_string(int number) {
  const std::span<char> bytes = string_bytes(number);
  const auto end = std::find(bytes.begin(), bytes.end(), '\0');
  return std::string(bytes.begin(), end);
}

int find_variable(std::string_view name) {
  for (int i = macros.named_count - 1; i >= 0; --i) {
    const int number = macros.named[i];
    if (name == macros.names[number]) return number;
  }
  return -1;
}

std::string_view variable_name(int number) {
  return macros.names[number] ? std::string_view(macros.names[number]) : std::string_view();
}

std::span<const int> variable_dimensions(int number) {
  if (!macros.dimension_count || macros.dimension_count[number] <= 0) return {};
  return {macros.dimension_sizes[number], static_cast<std::size_t>(macros.dimension_count[number])};
}

double array_cells(std::span<const int> sizes) {
  double row = 1;
  double total = 0;
  for (const int size : sizes) total += row *= size;
  return total;
}

std::int64_t data_cell_count(std::span<const int> sizes) {
  std::int64_t cells = 1;
  for (const int size : sizes) cells *= size;
  return cells;
}

int first_data_cell(int number) {
  const std::span<const int> sizes = variable_dimensions(number);
  std::int64_t offset = 0;
  std::int64_t row = 1;
  for (std::size_t d = 0; d + 1 < sizes.size(); ++d) {
    row *= sizes[d];
    offset += row;
  }
  return number + static_cast<int>(offset);
}

void lay_out_array(int number, std::span<const int> sizes) {
  if (sizes.empty()) return;
  const auto dims = static_cast<int>(sizes.size());
  auto note = [&](int cell, int from) {
    if (!macros.dimension_count) return;
    int* own = macros.size_tables + static_cast<std::ptrdiff_t>(cell) * most_dimensions;
    for (int d = from; d < dims; ++d) own[d - from] = sizes[static_cast<std::size_t>(d)];
    macros.dimension_sizes[cell] = own;
    macros.dimension_count[cell] = static_cast<std::int8_t>(dims - from);
  };
  const auto cells = static_cast<int>(array_cells(sizes));
  for (int i = 0; i < cells && macros.dimension_count; ++i) macros.dimension_count[number + i] = 0;
  // The index cells of one dimension point to the rows of the next, which come after all of them.
  int first = number;
  std::int64_t count = sizes[0];
  for (int d = 1; d < dims; ++d) {
    const int next = first + static_cast<int>(count);
    const int row = sizes[static_cast<std::size_t>(d)];
    for (int i = 0; i < static_cast<int>(count); ++i) {
      store_variable(first + i, next + static_cast<double>(i) * row);
      note(first + i, d);
    }
    first = next;
    count *= row;
  }
  // The array's own dimensions last: its first index cell is the same cell.
  note(number, 0);
}

int next_free_variable() {
  int next = var_shift();
  for (int i = 0; i < macros.named_count; ++i) {
    const int number = macros.named[i];
    const std::span<const int> sizes = variable_dimensions(number);
    const int cells = sizes.empty() ? 1 : static_cast<int>(array_cells(sizes));
    next = std::max(next, number + cells);
  }
  return next;
}

void name_variable(int number, std::string_view name, std::span<const int> sizes) {
  if (name.size() > longest_variable_name) error_end("Variable name too long (max. 50 chars.)");
  const std::string text(name);
  if (hooks_of_macro.is_function_name && hooks_of_macro.is_function_name(name)) {
    error_end_f("Can't use %s for a user-variable (%s is a reserved expression)", text.c_str(),
                text.c_str());
  }
  if (number >= macros.max_variables || number < 0) {
    error_end("Only", macros.max_variables, "variables available");
  }
  if (number < var_shift()) error_end("Cannot name variables which are private to other files");
  if (macros.names[number]) error_end("Can't rename variables:", number, macros.names[number]);
  const double cells = sizes.empty() ? 1 : array_cells(sizes);
  if (number + cells > macros.max_variables) {
    error_end_f("A [%s] array uses %.0f cells (%i of %i available)", sizes_text(sizes).c_str(),
                cells, macros.max_variables - number, macros.max_variables);
  }
  char* copy = take_heap(name.size() + 1);
  std::memcpy(copy, name.data(), name.size());
  copy[name.size()] = 0;
  macros.names[number] = copy;
  int place = macros.named_count++;
  while (place > 0 && macros.named[place - 1] > number) {
    macros.named[place] = macros.named[place - 1];
    --place;
  }
  macros.named[place] = number;
  if (macros.dimension_count) macros.dimension_count[number] = 0;
  lay_out_array(number, sizes);
}

void remove_names(int number) {
  while (macros.named_count > 0 && macros.named[macros.named_count - 1] >= number) {
    const int last = macros.named[--macros.named_count];
    macros.names[last] = nullptr;
    if (macros.dimension_count) macros.dimension_count[last] = 0;
  }
}

void dename_from(int number) {
  if (!macros.bodies.empty()) error_end("Can't dename variables from within a loop");
  if (number < var_shift()) error_end("Cannot dename a variable from a previous file");
  remove_names(number);
  // Outside of loops the heap holds names only, in the order of naming, not of numbers: what lies
  // above every name that stays is free.
  char* top = macros.heap_bottom;
  for (int i = 0; i < macros.named_count; ++i) {
    char* name = macros.names[macros.named[i]];
    top = std::max(top, name + std::strlen(name) + 1);
  }
  release_heap(top);
}

std::string all_digits(double value) {
  return std::isfinite(value) ? exact_text(value) : value_text(value);
}

std::string value_text(double value) {
  if (std::fabs(value) < 9e15 && value == std::floor(value))
    return std::to_string(static_cast<std::int64_t>(value));
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
  // Whole numbers keep all their digits, which the format might round or give an exponent.
  if (std::fabs(value) < 9.2e18 && value == std::floor(value)) return text_of("%.0f", value);
  // The format is one of those that `macfloat` builds.
  char buffer[512];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::snprintf(buffer, sizeof buffer, macros.number_format.c_str(), value);
#pragma GCC diagnostic pop
  return buffer;
}

}  // namespace zeb
