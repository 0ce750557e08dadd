#include "trees/drawing/tables.h"

#include <algorithm>
#include <cmath>

#include "base/indices.h"
#include "base/message_text.h"
#include "base/text_columns.h"
#include "console/output.h"
#include "console/screen.h"
#include "trees/drawing/text_diagram.h"
#include "trees/hooks.h"

namespace zeb {

table_state tables;

namespace {

constexpr int list_columns = 10;  // values in a row of a framed list
constexpr std::string_view empty_cell = "--";

/// A list as text; texts of cells without a value are empty.
struct list_table {
  std::string_view title;
  std::vector<std::string> cells;  // by element
};

std::string_view shown(const std::string& cell) { return cell.empty() ? empty_cell : cell; }

int widest(std::span<const std::string> texts, int least) {
  for (const std::string& text : texts) least = std::max(least, text_columns(text));
  return least;
}

std::string rule(std::size_t width) { return std::string(width, '-'); }

int line_width() { return std::clamp(screen.columns - 1, 20, 2000); }

/// Columns `first` to `end` - 1 of a framed matrix, under a head.
void emit_framed_columns(const matrix_table& table, std::size_t first, std::size_t end,
                         int label_width, std::span<const int> widths) {
  const std::size_t columns = widths.size();
  std::string head(at(label_width) + 2, ' ');
  for (std::size_t c = first; c < end; ++c) {
    const std::string label =
        c < table.column_labels.size() ? table.column_labels[c] : std::to_string(c);
    head += "  " + padded_left(label, widths[c]);
  }
  const std::string line = rule(static_cast<std::size_t>(text_columns(head)) + 1);
  emit(line, "\n", head, "\n", line, "\n");
  for (std::size_t r = 0; r < table.row_labels.size(); ++r) {
    std::string row = padded_right(table.row_labels[r], label_width) + " |";
    for (std::size_t c = first; c < end; ++c)
      row += "  " + padded_left(shown(table.cells[r * columns + c]), widths[c]);
    emit(row, "\n");
  }
  emit(line, "\n");
}

void emit_framed_list(const list_table& table, int screen_columns) {
  const std::size_t n = table.cells.size();
  const int label_width =
      std::max(3, static_cast<int>(std::to_string(n > 0 ? n - 1 : 0).size()) + 1);
  const int cell_width = widest(table.cells, static_cast<int>(empty_cell.size()) + 1) + 1;
  const int most = std::max(1, (screen_columns - label_width - 3) / cell_width);
  const auto per_row = static_cast<std::size_t>(std::clamp(list_columns, 1, most));
  std::string head(at(label_width) + 2, ' ');
  for (std::size_t c = 0; c < std::min(per_row, std::max<std::size_t>(n, 1)); ++c)
    head += padded_left(std::to_string(c), cell_width);
  const std::string line = rule(head.size() + 1);
  emit(line, "\n", head, "\n", line, "\n");
  for (std::size_t first = 0; first < n; first += per_row) {
    const std::span<const std::string> row(table.cells.data() + first,
                                           std::min(per_row, n - first));
    if (std::all_of(row.begin(), row.end(), [](const std::string& s) { return s.empty(); }))
      continue;
    std::string text = padded_left(std::to_string(first), label_width) + " |";
    for (const std::string& cell : row) text += padded_left(shown(cell), cell_width);
    emit(text, "\n");
  }
  emit(line, "\n");
}

void emit_framed_matrix(const matrix_table& table, int screen_columns) {
  const std::size_t rows = table.row_labels.size();
  const std::size_t columns = rows ? table.cells.size() / rows : 0;
  const int label_width = widest(table.row_labels, 3);
  std::vector<int> widths(columns, static_cast<int>(empty_cell.size()));
  for (std::size_t c = 0; c < columns; ++c) {
    const std::string label =
        c < table.column_labels.size() ? table.column_labels[c] : std::to_string(c);
    widths[c] = std::max(widths[c], text_columns(label));
    for (std::size_t r = 0; r < rows; ++r)
      widths[c] = std::max(widths[c], text_columns(table.cells[r * columns + c]));
  }
  for (std::size_t first = 0; first < columns;) {
    std::size_t end = first;
    int width = label_width + 3;
    while (end < columns && (end == first || width + widths[end] + 2 <= screen_columns))
      width += widths[end++] + 2;
    emit_framed_columns(table, first, end, label_width, widths);
    first = end;
  }
}

void emit_dense_list(const list_table& table, int screen_columns) {
  std::string line;
  for (std::size_t i = 0; i < table.cells.size(); ++i) {
    if (table.cells[i].empty()) continue;
    const std::string item = std::to_string(i) + ":" + table.cells[i];
    if (!line.empty() && text_columns(line) + 1 + text_columns(item) > screen_columns) {
      emit(line, "\n");
      line.clear();
    }
    line += (line.empty() ? "" : " ") + item;
  }
  emit(line.empty() ? empty_cell : line, "\n");
}

void emit_dense_matrix(const matrix_table& table) {
  const std::size_t rows = table.row_labels.size();
  const std::size_t columns = rows ? table.cells.size() / rows : 0;
  if (!table.column_labels.empty()) {
    std::string head = "-";
    for (const std::string& label : table.column_labels) head += " " + label;
    emit(head, "\n");
  }
  for (std::size_t r = 0; r < rows; ++r) {
    std::string text = table.row_labels[r];
    for (std::size_t c = 0; c < columns; ++c) {
      text += ' ';
      text += shown(table.cells[r * columns + c]);
    }
    emit(text, "\n");
  }
}

void emit_title(std::string_view title) {
  if (!title.empty()) emit(title, "\n");
}

void print_list(const list_table& table) {
  emit_title(table.title);
  if (tables.dense)
    emit_dense_list(table, line_width());
  else
    emit_framed_list(table, line_width());
  newline();
}

std::vector<std::string> integer_texts(std::span<const std::int64_t> values) {
  std::vector<std::string> out;
  out.reserve(values.size());
  for (const std::int64_t v : values) out.push_back(v == no_value ? "" : std::to_string(v));
  return out;
}
std::vector<std::string> fraction_texts(std::span<const double> values, int decimals) {
  std::vector<std::string> out;
  out.reserve(values.size());
  for (const double v : values) out.push_back(fraction_text(v, decimals));
  return out;
}

}  // namespace

int table_decimals(int customary) { return tables.precision >= 0 ? tables.precision : customary; }

std::string fraction_text(double value, int decimals) {
  if (std::isnan(value)) return "";
  return text_of("%.*f", decimals >= 0 ? decimals : table_decimals(), value);
}

void print_table(std::string_view title, std::span<const std::int64_t> values) {
  if (hooks_of_trees.take_list) {
    std::vector<double> copy;
    for (const std::int64_t v : values)
      copy.push_back(v == no_value ? no_fraction : static_cast<double>(v));
    if (hooks_of_trees.take_list(copy)) return;
  }
  print_list({title, integer_texts(values)});
}

void print_table(std::string_view title, std::span<const double> values) {
  print_table(title, values, -1);
}

void print_table(std::string_view title, std::span<const double> values, int decimals) {
  if (hooks_of_trees.take_list && hooks_of_trees.take_list(values)) return;
  print_list({title, fraction_texts(values, decimals)});
}

void print_table(const matrix_table& table) {
  emit_title(table.title);
  if (tables.dense)
    emit_dense_matrix(table);
  else
    emit_framed_matrix(table, line_width());
  newline();
}

void print_table(std::string_view title, std::span<const std::int64_t> cells,
                 std::span<const std::string> row_labels,
                 std::span<const std::string> column_labels) {
  print_table(matrix_table{title, row_labels, column_labels, integer_texts(cells)});
}

void print_table(std::string_view title, std::span<const double> cells,
                 std::span<const std::string> row_labels,
                 std::span<const std::string> column_labels) {
  print_table(matrix_table{title, row_labels, column_labels, fraction_texts(cells, -1)});
}

}  // namespace zeb
