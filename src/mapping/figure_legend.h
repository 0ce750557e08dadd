// Colours that can be told apart, also by the colour-blind and in print, and legends of them below
// a figure of a tree.
#pragma once

#include <string>
#include <vector>

#include "trees/drawing/svg_tree.h"

namespace zeb {

struct figure_color {
  int red = 0, green = 0, blue = 0;
  /// As a tag of a coloured tree begins, "(R,G,B)".
  std::string as_tag() const;
  /// "rgb(R,G,B)".
  std::string as_svg() const;
};
/// One of many: the first ten differ much, further ones less and less.
figure_color color_of_state(std::size_t number);
/// From dark blue at 0 to yellow at 1.
figure_color color_of_fraction(double fraction);
constexpr figure_color ambiguous_color = {150, 150, 150};

/// A line of the legend: a sample and what it means.
struct legend_entry {
  enum class sample { line, dashed_line, filled_box, open_box, gradient, none } kind;
  figure_color color = {};
  std::string text;
};
/// Writes a heading and the entries below what is drawn in the open figure.
void write_legend(const std::string& heading, const std::vector<legend_entry>& entries,
                  const svg_options& options);

}  // namespace zeb
