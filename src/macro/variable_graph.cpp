#include "macro/variable_graph.h"
#include "macro/variables.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/output_file.h"
#include "console/output.h"
#include "language/lexer.h"
#include "macro/array_operations.h"
#include "macro/macro_state.h"
#include "macro/scaling.h"

namespace zeb {

namespace {

constexpr int plot_columns = 60;
constexpr int plot_rows = 20;
constexpr int most_series = 9;

std::vector<double> values_of(const whole_array& array) {
  std::vector<double> values;
  for (int i = 0; i < array.cells; ++i) values.push_back(variable_value(array.first + i));
  return values;
}

struct extent {
  double low = std::numeric_limits<double>::infinity();
  double high = -low;
  void include(const std::vector<double>& values) {
    for (const double v : values) {
      if (!std::isfinite(v)) continue;
      low = std::min(low, v);
      high = std::max(high, v);
    }
  }
  // Place of a value on a scale of `steps` positions; -1 outside.
  int place(double v, int steps) const {
    if (!std::isfinite(v) || !(low <= high)) return -1;
    // Halves, since the range of large numbers may be beyond all numbers.
    const double share = (v / 2 - low / 2) / (high / 2 - low / 2);
    if (!std::isfinite(share)) return steps / 2;
    return std::clamp(static_cast<int>(std::lround(share * (steps - 1))), 0, steps - 1);
  }
};

// Points as digits (the number of the series) in a frame, with the ends of both scales.
void plot_points(const std::vector<double>& x, const std::vector<std::vector<double>>& series) {
  extent across;
  extent up;
  across.include(x);
  for (const auto& y : series) up.include(y);
  std::vector<std::string> rows(plot_rows, std::string(plot_columns, ' '));
  for (std::size_t s = 0; s < series.size(); ++s) {
    for (std::size_t i = 0; i < series[s].size(); ++i) {
      const int column = across.place(x[i], plot_columns);
      const int row = up.place(series[s][i], plot_rows);
      if (column < 0 || row < 0) continue;
      rows[static_cast<std::size_t>(plot_rows - 1 - row)][static_cast<std::size_t>(column)] =
          series.size() == 1 ? '*' : static_cast<char>('1' + s);
    }
  }
  for (int r = 0; r < plot_rows; ++r) {
    const double edge = r == 0 ? up.high : up.low;
    const std::string scale =
        r == 0 || r == plot_rows - 1 ? text_of("%10.4g", edge) : std::string(10, ' ');
    report_line(scale + " |" + rows[static_cast<std::size_t>(r)]);
  }
  report_line(std::string(10, ' ') + " +" + std::string(plot_columns, '-'));
  report_line(std::string(11, ' ') + text_of("%-10.4g", across.low) +
              std::string(plot_columns - 20, ' ') + text_of("%10.4g", across.high));
}

void plot_bars(const std::vector<double>& values) {
  extent range;
  range.include(values);
  range.include({0.0});
  for (std::size_t i = 0; i < values.size(); ++i) {
    const int length =
        std::max(0, range.place(values[i], plot_columns) - range.place(0, plot_columns));
    report_line(text_of("%6zu |", i) + std::string(static_cast<std::size_t>(length), '#') + " " +
                value_text(values[i]));
  }
}

std::string svg_escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '&') {
      escaped += "&amp;";
    } else if (c == '<') {
      escaped += "&lt;";
    } else if (c == '>') {
      escaped += "&gt;";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

void plot_svg(const whole_array& x, const whole_array& y, const std::string& file) {
  constexpr int width = 640;
  constexpr int height = 440;
  constexpr int margin = 60;
  output_file out;
  if (!out.create(file)) error_end("Cannot open file", file + out.cause());
  const std::vector<double> xs = values_of(x);
  const std::vector<double> ys = values_of(y);
  extent across;
  extent up;
  across.include(xs);
  up.include(ys);
  out.print(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg width=\"%i\" height=\"%i\" "
      "xmlns=\"http://www.w3.org/2000/svg\">\n<rect width=\"%i\" height=\"%i\" fill=\"white\"/>\n"
      "<g stroke=\"black\" fill=\"none\">\n<path d=\"M%i %i V%i H%i\"/>\n</g>\n<g "
      "fill=\"steelblue\">\n",
      width, height, width, height, margin, margin / 2, height - margin, width - margin / 2);
  for (std::size_t i = 0; i < xs.size(); ++i) {
    const int px = across.place(xs[i], width - margin * 3 / 2 - 20);
    const int py = up.place(ys[i], height - margin * 3 / 2 - 20);
    if (px < 0 || py < 0) continue;
    out.print("<circle cx=\"%i\" cy=\"%i\" r=\"3\"/>\n", margin + 10 + px,
              height - margin - 10 - py);
  }
  out.print(
      "</g>\n<g font-family=\"Verdana\" font-size=\"12\">\n<text x=\"%i\" y=\"%i\">%.5g</text>\n"
      "<text x=\"%i\" y=\"%i\" text-anchor=\"end\">%.5g</text>\n<text x=\"%i\" y=\"%i\" "
      "text-anchor=\"end\">%.5g</text>\n<text x=\"%i\" y=\"%i\" text-anchor=\"end\">%.5g</text>\n",
      margin, height - margin + 18, across.low, width - margin / 2, height - margin + 18,
      across.high, margin - 6, height - margin, up.low, margin - 6, margin / 2 + 12, up.high);
  out.print(
      "<text x=\"%i\" y=\"%i\" text-anchor=\"middle\">%s</text>\n<text x=\"14\" y=\"%i\" "
      "transform=\"rotate(-90 14 %i)\" text-anchor=\"middle\">%s</text>\n</g>\n</svg>\n",
      width / 2, height - 15, svg_escaped(x.name).c_str(), height / 2, height / 2,
      svg_escaped(y.name).c_str());
  if (!out.close()) error_end("Cannot write file", file + out.cause());
  report_line("Saved graph to file", file);
}

void check_lengths(const std::vector<double>& x, const whole_array& y) {
  if (static_cast<int>(x.size()) != y.cells)
    error_end("Dimensions of arrays to operate do not match!");
}

}  // namespace

void plot_arrays(char symbol) {
  if (symbol == '!') {
    const whole_array x = read_one_dimensional_array();
    const whole_array y = read_one_dimensional_array();
    check_lengths(values_of(x), y);
    if (read_file_name() == 0) error_end("Must give filename");
    const std::string file(token());
    check_end();
    plot_svg(x, y, file);
    return;
  }
  std::vector<double> x;
  if (symbol == '\\') x = values_of(read_one_dimensional_array());
  std::vector<std::vector<double>> series;
  do {
    const whole_array y = read_one_dimensional_array();
    if (symbol == '|') {
      plot_bars(values_of(y));
      continue;
    }
    if (x.empty()) {
      x.resize(static_cast<std::size_t>(y.cells));
      std::iota(x.begin(), x.end(), 0.0);
    }
    check_lengths(x, y);
    if (series.size() == most_series)
      error_end("Can't plot more than", most_series, "arrays at a time");
    series.push_back(values_of(y));
  } while (skip_blanks_peek() != ';');
  if (!series.empty()) plot_points(x, series);
}

void regress_arrays() {
  const whole_array x_array = read_one_dimensional_array();
  const std::vector<double> x = values_of(x_array);
  const whole_array y_array = read_one_dimensional_array();
  check_end();
  check_lengths(x, y_array);
  const std::vector<double> y = values_of(y_array);
  const auto n = static_cast<double>(x.size());
  const double mean_x = std::accumulate(x.begin(), x.end(), 0.0) / n;
  const double mean_y = std::accumulate(y.begin(), y.end(), 0.0) / n;
  double xx = 0;
  double xy = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    xx += (x[i] - mean_x) * (x[i] - mean_x);
    xy += (x[i] - mean_x) * (y[i] - mean_y);
  }
  if (!(xx > 0)) error_end_f("Array \"%s\" doesn't vary: no regression", x_array.name.c_str());
  macros.regbeta = xy / xx;
  macros.regalfa = mean_y - macros.regbeta * mean_x;
  macros.regr = correlation(x, y);
  emitf("Regression of %s on %s: alfa=%f, beta=%f, r=%f", y_array.name.c_str(),
        x_array.name.c_str(), macros.regalfa, macros.regbeta, macros.regr);
}

}  // namespace zeb
