// `setarray D1,...,Dn X v v v;`: all cells of a section of an array, in row order.
#include <cctype>
#include <cmath>
#include <vector>

#include "base/errors.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/commands.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/script_text.h"
#include "macro/variable_reference.h"
#include "macro/variables.h"

namespace zeb {

namespace {

std::vector<int> read_sizes() {
  std::vector<int> sizes;
  const comma_reading commas(true);
  for (;;) {
    const int c = skip_blanks_peek();
    if (!std::isdigit(c) && c != '(' && c != '\'') error_end("Must specify dimension");
    const double size = macro_whole_value();
    if (!(size > 0) || size > 2147483647) error_end("Must specify dimension");
    if (sizes.size() == most_dimensions)
      error_end("Variables cannot have more than", most_dimensions, "dimensions");
    sizes.push_back(static_cast<int>(size));
    if (!accept_char(',')) return sizes;
  }
}

// The named variable whose cells these are, or -1.
int owner_of(int cell) {
  for (int i = 0; i < macros.named_count; ++i) {
    const int number = macros.named[i];
    const std::span<const int> sizes = variable_dimensions(number);
    const int cells = sizes.empty() ? 1 : static_cast<int>(array_cells(sizes));
    if (number <= cell && cell < number + cells) return number;
  }
  return -1;
}

void check_sizes(const variable_reference& target, std::span<const int> sizes) {
  const std::span<const int> own = section_sizes(target);
  if (sizes.size() < own.size() && macros.protection == 2) {
    error_end("Too few dimensions to set (under protection mode 2, cannot re-set arrays)");
  }
  if (sizes.size() > own.size() && !(own.empty() && array_cells(sizes) == 1))
    error_end("Variable", target.base, "has only", own.size(), "dimensions");
  if (sizes.size() != own.size()) return;
  for (std::size_t d = 0; d < sizes.size(); ++d) {
    if (sizes[d] != own[d]) {
      error_end("Dimension", d, "of variable", target.base, "has", own[d], "cells, not", sizes[d]);
    }
  }
}

// Cells without a name take the shape that is written, unless it would break a named array.
int lay_out_unnamed(int cell, std::span<const int> sizes) {
  const auto end = cell + static_cast<int>(array_cells(sizes));
  for (int i = cell; i < end && macros.protection; ++i) {
    const int owner = owner_of(i);
    if (owner < 0 || variable_dimensions(owner).empty()) continue;
    if (sizes.size() == 1) return cell;
    if (macros.protection == 2)
      error_end("Cannot re-set array under protection mode 2\nVar.", owner, variable_name(owner));
  }
  lay_out_array(cell, sizes);
  return end - static_cast<int>(data_cell_count(sizes));
}

}  // namespace

void setarray_command() {
  require_macros();
  no_timing();
  const std::vector<int> sizes = read_sizes();
  const variable_reference target = read_variable_reference(false);
  const bool owned = macros.protection && owner_of(target.base) >= 0;
  if (owned) check_sizes(target, sizes);
  if (target.cell + array_cells(sizes) > macros.max_variables) {
    error_end("Only", macros.max_variables - target.cell, "variables available");
  }
  const std::int64_t count = data_cell_count(sizes);
  std::vector<double> values;
  const reading_flag exact(&macro_reading::exact_numbers);
  values.reserve(static_cast<std::size_t>(count));
  for (std::int64_t i = 0; i < count; ++i) {
    if (skip_blanks_peek() == ';') {
      if (input_ended()) error_end("End of file while reading array");
      error_end("Not enough values specified in array");
    }
    values.push_back(macro_value());
  }
  if (skip_blanks_peek() != ';') error_end("Setarray must end with a semicolon");
  int first = target.cell;
  if (!owned) {
    first = lay_out_unnamed(target.cell, sizes);
  } else if (sizes.size() == section_sizes(target).size()) {
    first = section_start(target);
  }
  for (std::size_t i = 0; i < values.size(); ++i)
    store_variable(first + static_cast<int>(i), values[i]);
}

}  // namespace zeb
