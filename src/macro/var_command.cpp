// `var`: naming, listing and removing variables; graphs and regressions are in variable_graph.h.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/commands.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/macro_values.h"
#include "macro/script_text.h"
#include "macro/variable_graph.h"
#include "macro/variable_reference.h"
#include "macro/variables.h"

namespace zeb {

namespace {

std::string dimensions_text(std::span<const int> sizes, const char* between) {
  std::string text;
  for (const int size : sizes) {
    if (!text.empty()) text += between;
    text += std::to_string(size);
  }
  return text;
}

void list_variables() {
  emitf("%i variables defined", macros.named_count);
  for (int i = 0; i < macros.named_count; ++i) {
    const int number = macros.named[i];
    std::string line = text_of("Var. %4i %12s ", number, macros.names[number]);
    const std::span<const int> sizes = variable_dimensions(number);
    if (!sizes.empty()) line += "[" + dimensions_text(sizes, " ") + "]";
    report_line(line);
  }
}

std::string bits_text(double value) {
  std::string text = "{";
  const std::int32_t bits = value_bits(value);
  for (int bit = 0; bit < 30; ++bit) {
    if (bits >> bit & 1) text += " " + std::to_string(bit);
  }
  return text + " }";
}

enum class display { value, bits, string };

std::string shown(int cell, display how) {
  return how == display::bits ? bits_text(variable_value(cell)) : value_text(variable_value(cell));
}

// "Var. 3", the name, subscripts as given, and the cell when they moved it.
std::string heading(const variable_reference& reference) {
  std::string text = "Var. " + std::to_string(reference.base);
  if (!variable_name(reference.base).empty())
    text += " " + std::string(variable_name(reference.base));
  if (reference.subscripts == 0) return text;
  const int shown = std::min(reference.subscripts, most_dimensions);
  text += "[" + dimensions_text({reference.subscript.data(), static_cast<std::size_t>(shown)}, " ");
  text += "]";
  if (reference.cell != reference.base) text += text_of(" (=%i)", reference.cell);
  return text;
}

void show_array(const variable_reference& reference, display how) {
  const std::span<const int> sizes = section_sizes(reference);
  report_line(heading(reference) + ":");
  const int first = section_start(reference);
  const auto cells = static_cast<int>(data_cell_count(sizes));
  const int row = sizes.back();
  for (int i = 0; i < cells; i += row) {
    std::string line = "   ";
    for (int j = 0; j < row; ++j) {
      const std::string text = " " + shown(first + i + j, how);
      // The line buffer cuts what is longer than it holds.
      if (line.size() + text.size() > 1900) {
        report_line(line);
        line = "   ";
      }
      line += text;
    }
    report_line(line);
  }
}

// The cells as a `setarray` command that makes them again.
void write_setarray(const variable_reference& reference) {
  const std::span<const int> sizes = section_sizes(reference);
  std::string text = "Setarray ";
  text += sizes.empty() ? "1" : dimensions_text(sizes, ",");
  const std::string_view name = variable_name(reference.base);
  text += " " + (name.empty() || reference.subscripts ? std::to_string(reference.cell - var_shift())
                                                      : std::string(name));
  report_line(text);
  constexpr std::size_t longest_line = 1900;
  const int row = sizes.empty() ? 1 : sizes.back();
  const int first = section_start(reference);
  const auto cells = sizes.empty() ? 1 : static_cast<int>(data_cell_count(sizes));
  std::string line;
  for (int i = 0; i < cells; ++i) {
    const bool row_begins = i % row == 0;
    if (i > 0 && (row_begins || line.size() > longest_line)) {
      report_line(line);
      line.clear();
    }
    if (!row_begins) line += ' ';
    line += value_text(variable_value(first + i));
  }
  report_line(line);
  report_line(";");
}

void show_variable(display how) {
  if (how == display::string && skip_blanks_peek() == ';') {
    error_end("Must specify number of variable to display as string");
  }
  if (how == display::bits && skip_blanks_peek() == ';') {
    error_end("Must specify number of variable to display as bits");
  }
  const variable_reference reference = read_variable_reference(false);
  if (accept_char('*')) {
    if (how != display::value) error_end("Cannot save in matrix form using bits");
    check_end();
    write_setarray(reference);
    return;
  }
  check_end();
  if (how == display::string) {
    report_line(heading(reference) + " [string] " + variable_string(section_start(reference)));
    return;
  }
  if (reference.is_section()) {
    show_array(reference, how);
    return;
  }
  report_line(heading(reference) + ": " + shown(reference.cell, how));
}

int read_dimension(int which, int number) {
  const double size = macro_whole_value();
  if (!(size > 0)) error_end("Dimension", which, "of var.", number, "cannot be <= 0!");
  if (size > 2147483647) error_end("Dimension", which, "of var.", number, "is too large");
  return static_cast<int>(size);
}

void add_dimension(std::vector<int>& sizes, int number) {
  if (sizes.size() == most_dimensions)
    error_end("Variables cannot have more than", most_dimensions, "dimensions");
  sizes.push_back(read_dimension(static_cast<int>(sizes.size()), number));
}

std::string read_variable_name() {
  const reading_flag plain(&macro_reading::no_expansion);
  if (!std::isalpha(skip_blanks_peek()))
    error_end("Variable names must start with a letter (missing comma?)");
  std::string name;
  int c = read_raw_char();
  for (; std::isalnum(c) || c == '_'; c = read_raw_char()) {
    if (name.size() <= longest_variable_name) name += static_cast<char>(c);
  }
  unread_raw_char();
  return name;
}

// Sizes in brackets after a name, with commas or blanks between them.
void read_bracketed_sizes(std::vector<int>& sizes, int number) {
  if (peek_raw_char() != '[') return;
  read_raw_char();
  const comma_reading commas(true);
  for (;;) {
    const int c = skip_blanks_peek();
    if (c == ',') {
      next_nonblank();
      continue;
    }
    if (c == ']') {
      next_nonblank();
      return;
    }
    if (c == ';') error_end("Need closing brackets");
    add_dimension(sizes, number);
  }
}

// Returns the cells taken.
int name_one(int number, std::vector<int> sizes) {
  const std::string name = read_variable_name();
  read_bracketed_sizes(sizes, number);
  name_variable(number, name, sizes);
  const int cells = sizes.empty() ? 1 : static_cast<int>(array_cells(sizes));
  if (!macros.report) return cells;
  std::string text = "Var. " + std::to_string(number) + " " + name;
  if (!sizes.empty())
    text += text_of(" (%zu-dimensional, ", sizes.size()) + dimensions_text(sizes, " x ") + ")";
  report_line(text);
  return cells;
}

// `var = N name ...`: the number of each may be "+", the next free one, and may carry dimensions.
// Names that follow without a number take the cells that come next.
void name_numbered() {
  int next = -1;
  while (skip_blanks_peek() != ';') {
    int number = next;
    std::vector<int> sizes;
    const int c = skip_blanks_peek();
    const comma_reading commas(true);
    if (accept_char('+')) {
      number = next_free_variable();
    } else if (std::isdigit(c) || c == '(') {
      const double value = macro_whole_value() + var_shift();
      check_variable(value);
      number = static_cast<int>(value);
    } else if (next < 0) {
      error_end("Give number of variable to name");
    }
    while (peek_raw_char() == ',') {
      read_raw_char();
      add_dimension(sizes, number);
    }
    next = number + name_one(number, std::move(sizes));
  }
}

void name_next() {
  while (skip_blanks_peek() != ';') name_one(next_free_variable(), {});
}

void dename() {
  if (skip_blanks_peek() == ';') {
    dename_from(var_shift());
    return;
  }
  const read_number read = macro_number();
  check_end();
  const double number = whole_value(read) + (read.named ? 0 : var_shift());
  if (!(number >= 0)) error_end("No variable number", value_text(number));
  // Variables above N go, N itself stays.
  if (number < macros.max_variables) dename_from(static_cast<int>(number) + 1);
}

}  // namespace

void var_command() {
  require_macros();
  no_timing();
  const int c = [] {
    const reading_flag strings(&macro_reading::no_strings);
    return skip_blanks_peek();
  }();
  switch (c) {
    case ';':
      list_variables();
      return;
    case '=':
      next_nonblank();
      name_numbered();
      return;
    case ':':
      next_nonblank();
      name_next();
      return;
    case '-':
      next_nonblank();
      dename();
      return;
    case '/':
      next_nonblank();
      show_variable(display::bits);
      return;
    case '$':
      read_raw_char();
      show_variable(display::string);
      return;
    case '+':
    case '|':
    case '!':
    case '\\':
      next_nonblank();
      plot_arrays(static_cast<char>(c));
      return;
    case '&':
      next_nonblank();
      regress_arrays();
      return;
    default:
      show_variable(display::value);
  }
}

}  // namespace zeb
