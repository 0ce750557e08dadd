// `setarray D1,...,Dn X v v v;`: all cells of a section of an array, in row order.
#include <cctype>
#include <cmath>
#include <vector>

#include "macro/commands.h"
#include "macro/macro_reader.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/variable_reference.h"
#include "shell/errors.h"
#include "shell/input.h"
#include "shell/interpreter.h"
#include "shell/lexer.h"

namespace zeb {

namespace {

std::vector<int> read_sizes() {
  std::vector<int> sizes;
  const literal_commas commas;
  for (;;) {
    const int c = skip_blanks_peek();
    if (!std::isdigit(c) && c != '(' && c != '\'') error_end("Must specify dimension");
    const double size = std::trunc(macro_value());
    if (!(size > 0) || size > 2147483647) error_end("Must specify dimension");
    if (sizes.size() == most_dimensions)
      error_end("Variables cannot have more than", most_dimensions, "dimensions");
    sizes.push_back(static_cast<int>(size));
    if (!accept_char(',')) return sizes;
  }
}

void check_sizes(const variable_reference& target, std::span<const int> sizes) {
  if (!macros.protection || !target.named) return;
  const std::span<const int> own = variable_dimensions(target.cell);
  if (sizes.size() < own.size() && macros.protection == 2) {
    error_end("Too few dimensions to set (under protection mode 2, cannot re-set arrays)");
  }
  if (sizes.size() > own.size())
    error_end("Variable", target.base, "has only", own.size(), "dimensions");
  for (std::size_t d = 0; d < sizes.size(); ++d) {
    if (sizes[d] != own[d]) {
      error_end("Dimension", d, "of variable", target.base, "has", own[d], "cells, not", sizes[d]);
    }
  }
}

}  // namespace

void setarray_command() {
  require_macros();
  no_timing();
  const std::vector<int> sizes = read_sizes();
  const variable_reference target = read_variable_reference(false);
  check_sizes(target, sizes);
  const std::int64_t count = data_cell_count(sizes);
  if (target.cell + array_cells(sizes) > macros.max_variables) {
    error_end("Only", macros.max_variables - target.cell, "variables available");
  }
  std::vector<double> values;
  values.reserve(static_cast<std::size_t>(count));
  for (std::int64_t i = 0; i < count; ++i) {
    if (skip_blanks_peek() == ';') {
      if (input_ended()) error_end("End of file while reading array");
      error_end("Not enough values specified in array");
    }
    values.push_back(macro_value());
  }
  if (skip_blanks_peek() != ';') error_end("Setarray must end with a semicolon");
  // Unnamed cells take the shape that is written.
  if (variable_dimensions(target.cell).size() != sizes.size() || !macros.protection) {
    if (sizes.size() > 1 || macros.protection) lay_out_array(target.cell, sizes);
  }
  int first = target.cell;
  std::int64_t row = 1;
  for (std::size_t d = 0; d + 1 < sizes.size(); ++d) first += static_cast<int>(row *= sizes[d]);
  for (std::size_t i = 0; i < values.size(); ++i)
    store_variable(first + static_cast<int>(i), values[i]);
}

}  // namespace zeb
