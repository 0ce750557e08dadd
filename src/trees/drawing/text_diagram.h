// Trees as text: one line a terminal, branches of plain characters, texts on the branches.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "base/text_columns.h"
#include "trees/drawing/display.h"

namespace zeb {

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

/// The lines of the diagram, without line ends. `labels` are the texts of the terminals, by taxon;
/// `node_texts`, by node, stand on the branches (may be empty or shorter than the tree). A diagram
/// wider than `columns` goes on in further passes: lines that are cut end in ">>>" and go on behind
/// one.
std::vector<std::string> diagram_lines(const_tree_span tree, int ntax,
                                       std::span<const std::string> labels,
                                       std::span<const std::string> node_texts,
                                       const diagram_style& style);

/// A text in lines, at the separator; lines above `width` (if not 0) are broken, at a blank or
/// comma where there is one. Never empty.
std::vector<std::string> text_lines(std::string_view text, char separator, int width);

}  // namespace zeb
