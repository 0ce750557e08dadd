// What a tag says about how to draw its branch.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

struct branch_style {
  std::string color = "black";  // as SVG writes it
  bool dashed = false;
  double thickness = 0;  // pixels; 0 the drawing's own
  double length = -1;    // pixels; below 0 the drawing's own
  std::string text;      // after the colour
};

/// Splits a tag of a coloured tree: "[-]D/text" with a digit D, or "[-](R,G,B[,T[:L]])/text" with
/// thickness T and length L, which may also stand after the parenthesis. Several digits, or
/// anything else, are an ambiguous branch: gray. An empty tag is a black branch.
branch_style read_branch_style(std::string_view tag);

/// Colour 0 to 9: red, blue, green, cyan, brown, pink, orange, purple, magenta, yellow.
const char* color_of_digit(int digit);

/// The numbers of a colour code, "R,G,B" and two further ones after "," or ":".
struct color_code {
  int count = 0;  // numbers read; -1: not a code
  double value[5] = {};
  /// "rgb(R,G,B)", of the absolute values, 255 at most.
  std::string rgb() const;
};
color_code read_color_code(std::string_view text);

}  // namespace zeb
