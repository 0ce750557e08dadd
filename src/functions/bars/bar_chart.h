// Lists of numbers as bars, in text or as an SVG figure.
#pragma once

#include <string>
#include <vector>

namespace zeb {

/// Rows of bars: each label has a bar of every series.
struct bar_chart {
  std::string title;
  std::vector<std::string> labels;
  std::vector<std::string> names;           // by series
  std::vector<std::vector<double>> series;  // values by label; no number: no bar
  int width = 60;                           // of the longest bar, in columns
};

/// One line for each bar; bars of several series have letters of their own. Bars below zero go to
/// the left of those above.
void print_bars(const bar_chart& chart);
/// Into the open SVG file.
void draw_bars(const bar_chart& chart);
/// How many values lie in each of `count` classes of the same width, from the least to the largest
/// value of all series; the labels are the lower ends.
bar_chart histogram_of(const bar_chart& values, int count);

}  // namespace zeb
