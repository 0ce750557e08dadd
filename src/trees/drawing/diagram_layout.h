// Where the lines, corners and texts of a tree stand in its text diagram.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// The eight characters of branches.
struct line_characters {
  char vertical, vertical_right, lower_corner, upper_corner;
  char vertical_left, horizontal, horizontal_up, crossing;
};
/// How a diagram is to look.
struct diagram_style {
  line_characters lines{'|', '|', '`', ',', '|', '-', '-', '+'};
  bool symmetric = false;  // branches leave midway between the descendants
  bool roomy = false;      // an empty line between terminals
  bool second_largest_first = false;
  int outgroup = 0;
  int columns = 79;    // width of a line, at least 20
  char separator = 0;  // separates the lines of a text; 0: a text is one line
  int text_width = 0;  // longest line of a text in several lines; 0 no limit
};

/// Something in a row of the diagram: a run of one character, or a text.
struct diagram_piece {
  int row = 0;
  int column = 0;
  int length = 0;             // columns, at least 1
  char character = 0;         // of a run; 0: text
  std::string_view words;     // of a text; points into the layout
  bool joined_left = false;   // the branch comes in from the column before
  bool joined_right = false;  // the branch goes on in the column after
};

struct diagram_layout {
  std::vector<diagram_piece> pieces;  // in no order, none lies over another
  int rows = 0;
  int columns = 0;                              // width of the whole diagram
  bool one_pass = true;                         // it fits in the lines
  std::vector<std::string> labels;              // by taxon, with a blank in front
  std::vector<std::vector<std::string>> texts;  // by node, in lines
};

/// Columns of the windows that a wide diagram is cut into.
struct diagram_windows {
  int first = 76;   // columns of the first, which has a cut sign at its right only
  int others = 73;  // columns of the others

  int index(int column) const { return column < first ? 0 : (column - first) / others + 1; }
  int start(int window) const { return window == 0 ? 0 : first + (window - 1) * others; }
  int end(int column) const { return first + index(column) * others; }
};
diagram_windows windows_for(int columns);

diagram_layout lay_out_diagram(const_tree_span tree, int ntax, std::span<const std::string> labels,
                               std::span<const std::string> node_texts, const diagram_style& style);

}  // namespace zeb
