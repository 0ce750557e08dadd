#include "macro/variable_reference.h"

#include <cmath>

#include "base/errors.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/macro_values.h"
#include "macro/script_text.h"
#include "macro/variables.h"

namespace zeb {

namespace {

int checked_cell(double position) {
  if (!(position >= 0))
    error_end("No variable number", std::isfinite(position) ? value_text(position) : "?");
  if (position >= macros.max_variables) error_end("Variable does not exist");
  return static_cast<int>(position);
}

// One subscript under protection: within its dimension.
void check_subscript(int base, std::span<const int> sizes, std::size_t which, double value) {
  if (which >= sizes.size()) error_end("Variable", base, "has only", sizes.size(), "dimensions");
  if (value < 0 || value >= sizes[which]) {
    error_end_f("Variable %i has only %i values (0-%i) for dimension %zu", base, sizes[which],
                sizes[which] - 1, which);
  }
}

// The character of an ASCII code, between the values of a range.
char read_separator() {
  const double code = macro_whole_value();
  return code >= 1 && code < 256 ? static_cast<char>(static_cast<int>(code)) : ' ';
}

}  // namespace

std::span<const int> section_sizes(const variable_reference& reference) {
  if (!reference.is_section()) return {};
  return variable_dimensions(reference.base)
      .subspan(static_cast<std::size_t>(reference.subscripts));
}

int section_start(const variable_reference& reference) {
  if (!reference.is_section()) return reference.cell;
  if (reference.subscripts == 0) return first_data_cell(reference.cell);
  // An index cell leads to where its row begins, be that of index cells again.
  int cell = reference.cell;
  for (int d = reference.subscripts; d < reference.dimensions; ++d)
    cell = checked_cell(std::trunc(variable_value(cell)));
  const std::int64_t cells = data_cell_count(section_sizes(reference));
  checked_cell(static_cast<double>(cell + cells - 1));
  return cell;
}

int read_variable_number(bool* named) {
  const read_number read = macro_number();
  if (named) *named = read.named;
  const double number = read.named ? read.value : read.value + var_shift();
  if (read.value < 0) error_end("No variable number", value_text(read.value));
  whole_value(read);
  check_variable(number);
  return static_cast<int>(number);
}

variable_reference read_subscripts(int base, bool named, bool ranges) {
  variable_reference reference;
  reference.base = reference.cell = reference.last = base;
  reference.named = named;
  const std::span<const int> sizes = variable_dimensions(base);
  reference.dimensions = static_cast<int>(sizes.size());
  if (peek_raw_char() != '[') return reference;
  read_raw_char();
  const comma_reading commas(true);
  double position = base;
  for (;;) {
    int c = skip_blanks_peek();
    if (c == ',') {
      next_nonblank();
      continue;
    }
    if (c == ']') {
      if (reference.subscripts == 0) error_end("Unexpected closing bracket, ]");
      next_nonblank();
      break;
    }
    if (c == ';') error_end("Need closing brackets");
    if (c == '&' && reference.range) {
      next_nonblank();
      reference.separator = read_separator();
      continue;
    }
    if (reference.range) error_end("Ranges are valid only for the last dimension");
    const double subscript = macro_subscript(ranges);
    if (macros.protection)
      check_subscript(base, sizes, static_cast<std::size_t>(reference.subscripts), subscript);
    // Each subscript but the first starts from where the index cell points.
    if (reference.subscripts > 0) {
      position = std::trunc(variable_value(checked_cell(position)));
    }
    position += subscript;
    reference.cell = checked_cell(position);
    reference.last = reference.cell;
    if (reference.subscripts < most_dimensions)
      reference.subscript[static_cast<std::size_t>(reference.subscripts)] =
          static_cast<int>(subscript);
    ++reference.subscripts;
    c = skip_blanks_peek();
    if (c != '-') continue;
    if (!ranges) continue;
    if (!macros.protection) error_end("Ranges valid only under macro protected mode");
    next_nonblank();
    const double end = macro_subscript(false);
    check_subscript(base, sizes, static_cast<std::size_t>(reference.subscripts) - 1, end);
    if (reference.subscripts < reference.dimensions)
      error_end("Ranges are valid only for the last dimension");
    if (end < subscript) error_end("Ranges can't end before they begin");
    reference.range = true;
    reference.last = checked_cell(reference.cell + (end - subscript));
  }
  return reference;
}

variable_reference read_variable_reference(bool ranges) {
  bool named = false;
  const int base = read_variable_number(&named);
  return read_subscripts(base, named, ranges);
}

}  // namespace zeb
