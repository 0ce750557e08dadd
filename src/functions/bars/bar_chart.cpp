#include "functions/bars/bar_chart.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "base/indices.h"
#include "base/message_text.h"
#include "base/text_columns.h"
#include "console/output.h"
#include "macro/variables.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/svg_text.h"

namespace zeb {
namespace {

constexpr std::string_view bar_letters = "#=o+x*%@-";
constexpr std::array<std::string_view, 9> bar_colors = {"#0072b2", "#d55e00", "#009e73",
                                                        "#cc79a7", "#e69f00", "#56b4e9",
                                                        "#f0e442", "#999999", "#000000"};

/// From the largest value below zero to the largest above.
struct bar_scale {
  double low = 0;
  double high = 0;

  explicit bar_scale(const bar_chart& chart) {
    for (const std::vector<double>& own : chart.series)
      for (const double v : own) {
        if (!std::isfinite(v)) continue;
        low = std::min(low, v);
        high = std::max(high, v);
      }
  }
  /// Halves, since the range of large numbers may be beyond all numbers.
  double length(double value, double longest) const {
    const double range = high / 2 - low / 2;
    return range > 0 ? value / 2 / range * longest : 0;
  }
};

int widest(const std::vector<std::string>& labels) {
  int width = 0;
  for (const std::string& label : labels) width = std::max(width, text_columns(label));
  return width;
}

std::string bar_line(const bar_scale& scale, double value, int width, char letter) {
  const auto below = static_cast<std::size_t>(std::lround(-scale.length(scale.low, width)));
  const auto length = static_cast<std::size_t>(std::lround(std::abs(scale.length(value, width))));
  if (value < 0)
    return std::string(below - std::min(below, length), ' ') + std::string(length, letter) + "| " +
           value_text(value);
  return std::string(below, ' ') + "|" + std::string(length, letter) + " " + value_text(value);
}

}  // namespace

void print_bars(const bar_chart& chart) {
  if (!chart.title.empty()) emit(chart.title, "\n");
  const bar_scale scale(chart);
  const int column = widest(chart.labels);
  for (std::size_t s = 0; chart.series.size() > 1 && s < chart.series.size(); ++s)
    emit("  ", bar_letters[s], " ", chart.names[s], "\n");
  for (std::size_t i = 0; i < chart.labels.size(); ++i)
    for (std::size_t s = 0; s < chart.series.size(); ++s) {
      const double value = chart.series[s][i];
      if (!std::isfinite(value)) continue;
      const std::string label = s == 0 ? chart.labels[i] : std::string();
      emit("  ", padded_left(label, column), " ",
           bar_line(scale, value, chart.width, bar_letters[s]), "\n");
    }
}

void draw_bars(const bar_chart& chart) {
  constexpr double font = 12;
  constexpr double thickness = 14;
  constexpr double gap = 6;
  constexpr double longest = 480;
  const bar_scale scale(chart);
  double left = 0;
  for (const std::string& label : chart.labels) left = std::max(left, svg_text_width(label, font));
  const double zero = left + gap - scale.length(scale.low, longest);
  write_svg("<g font-family=\"Verdana\" font-size=\"12\">\n");
  const auto text = [](double x, double y, const char* anchor, std::string_view what) {
    write_svg(text_of("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\">", x, y, anchor) +
              xml_text(what) + "</text>\n");
  };
  const auto box = [](double x, double y, double width, std::size_t color) {
    write_svg(text_of("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"%s\"/>\n",
                      x, y, width, thickness, std::string(bar_colors[color]).c_str()));
  };
  double y = 0;
  double right = zero + longest;
  const auto heading = [&](std::string_view what, double x) {
    text(x, y + font, "start", what);
    right = std::max(right, x + svg_text_width(what, font));
    y += thickness + gap;
  };
  if (!chart.title.empty()) heading(chart.title, 0);
  for (std::size_t s = 0; chart.series.size() > 1 && s < chart.series.size(); ++s) {
    box(0, y, thickness, s);
    heading(chart.names[s], thickness + gap);
  }
  const double top = y;
  for (std::size_t i = 0; i < chart.labels.size(); ++i) {
    text(left, y + font, "end", chart.labels[i]);
    for (std::size_t s = 0; s < chart.series.size(); ++s, y += thickness) {
      const double value = chart.series[s][i];
      if (!std::isfinite(value)) continue;
      const double length = scale.length(value, longest);
      box(std::min(zero, zero + length), y, std::abs(length), s);
      const double end = std::max(zero, zero + length) + gap;
      text(end, y + font, "start", value_text(value));
      right = std::max(right, end + svg_text_width(value_text(value), font));
    }
    y += gap;
  }
  write_svg(text_of("<path d=\"M%.1f %.1f V%.1f\" stroke=\"black\"/>\n", zero, top, y - gap));
  grow_svg_page(0, 0, right, y);
}

bar_chart histogram_of(const bar_chart& values, int count) {
  bar_chart out{values.title, {}, values.names, {}, values.width};
  double low = 0;
  double high = 0;
  bool any = false;
  for (const std::vector<double>& own : values.series)
    for (const double v : own) {
      if (!std::isfinite(v)) continue;
      low = any ? std::min(low, v) : v;
      high = any ? std::max(high, v) : v;
      any = true;
    }
  const double step = high / count - low / count;
  for (int i = 0; i < count; ++i) out.labels.push_back(text_of("%.6g", low + i * step));
  for (const std::vector<double>& own : values.series) {
    std::vector<double>& counts = out.series.emplace_back(at(count), 0.0);
    for (const double v : own) {
      if (!std::isfinite(v)) continue;
      const int place = step > 0 ? static_cast<int>(v / step - low / step) : 0;
      ++counts[at(std::clamp(place, 0, count - 1))];
    }
  }
  return out;
}

}  // namespace zeb
