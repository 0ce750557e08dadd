// `barplot A B : options;`: arrays as bars.
#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "base/errors.h"
#include "console/output.h"
#include "console/settings.h"
#include "functions/bars/bar_chart.h"
#include "functions/commands.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "macro/array_operations.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/variables.h"
#include "matrix/matrix.h"
#include "trees/drawing/figure_request.h"
#include "trees/drawing/svg_file.h"

namespace zeb {
namespace {

constexpr int most_arrays = 9;
constexpr std::size_t longest_title = 500;

enum class bar_labels { numbers, taxa, characters };
struct barplot_settings {
  int width = 60;
  int classes = 0;  // of a histogram; 0: the values themselves
  bar_labels labels = bar_labels::numbers;
  std::string file;
  std::string title;
};

void read_figure_file(barplot_settings& how) {
  if (read_file_name() == 0) error_end("Must give filename");
  how.file = token();
}

constexpr command_options rows = {
    number<&barplot_settings::width>("width", {5, 1000}, "Width of bars must be 5 - 1000")
        .help("columns of the longest bar"),
    number<&barplot_settings::classes>("histogram", {1, 1000}, "Number of classes must be 1 - 1000")
        .help("show how many values lie in each of N classes of the same width"),
    choice<&barplot_settings::labels>("taxa", 1).help("cells are called by names of taxa"),
    choice<&barplot_settings::labels>("characters", 2)
        .help("cells are called by names of characters"),
    form<read_figure_file>("file").argument("name").help("write an SVG figure to this file"),
    text<&barplot_settings::title>("title", longest_title, "Title too long")
        .argument("text")
        .help("text above the bars; must be the last option"),
};

std::string label_of(bar_labels kind, int cell) {
  if (kind == bar_labels::taxa && cell < matrix.ntax) return std::string(taxon_name(cell));
  if (kind == bar_labels::characters && cell < matrix.nchar) return character_name(cell);
  return std::to_string(cell);
}

/// The arrays' values, as long as the longest; those that are shorter have no bars at the end.
bar_chart read_arrays() {
  bar_chart chart;
  std::size_t cells = 0;
  for (int c = skip_blanks_peek(); c != ';' && c != ':'; c = skip_blanks_peek()) {
    if (static_cast<int>(chart.series.size()) == most_arrays)
      error_end("Can't plot more than", most_arrays, "arrays at a time");
    const whole_array array = read_one_dimensional_array();
    std::vector<double>& values = chart.series.emplace_back();
    for (int i = 0; i < array.cells; ++i) values.push_back(variable_value(array.first + i));
    chart.names.push_back(array.name);
    cells = std::max(cells, values.size());
  }
  if (chart.series.empty()) error_end("Give the name of an array to plot");
  for (std::vector<double>& values : chart.series)
    values.resize(cells, std::numeric_limits<double>::quiet_NaN());
  return chart;
}

}  // namespace

constexpr option_table barplot_options =
    rows.table("barplot", {.unknown = "Unrecognized option for \"barplot\": %s"});

void barplot_command() {
  require_macros();
  no_timing();
  if (macros.protection == 0) error_end("Bar plots not allowed under macro protection 0");
  bar_chart chart = read_arrays();
  barplot_settings how;
  if (accept_char(':'))
    while (skip_blanks_peek() != ';') read_option(how, barplot_options);
  check_end();
  if (how.labels != bar_labels::numbers) require_data("using names in bar plots");
  for (std::size_t i = 0; i < chart.series[0].size(); ++i)
    chart.labels.push_back(label_of(how.labels, static_cast<int>(i)));
  chart.title = how.title.empty() && chart.names.size() == 1 ? chart.names[0] : how.title;
  chart.width = how.width;
  if (how.classes > 0) chart = histogram_of(chart, how.classes);
  if (how.file.empty()) return print_bars(chart);
  open_svg_file(how.file, chart.title);
  draw_bars(chart);
  end_figure();
  if (settings.report) report_line("Saved graph to file", how.file);
}

}  // namespace zeb
