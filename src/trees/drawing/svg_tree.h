// A tree with texts on its branches as an SVG figure.
#pragma once

#include <span>
#include <string>
#include <utility>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

/// What `ttags &` takes after the file name. Sizes in pixels; -1 is a fitting size.
struct svg_options {
  int branch_length = -1;  // span of a branch
  int branch_height = -1;  // distance between terminals
  int thickness = 2;
  bool colors = false;  // tags begin with a colour
  int terminal_font = 13;
  int branch_font = 11;
  bool italics = false;         // taxon names
  bool branch_italics = false;  // legends
  int pen_width = 0;            // outline of letters, makes them bold
  int text_separation = -1;     // between the lines of a legend
  int legend_up = 0;
  int legend_shift = 0;
  int shift = 0;        // of the whole tree, to the right
  char position = 'c';  // of legends: above, below, centered; d: centered, in one line
  char separator = 0;   // of the lines of a legend
  int text_width = 0;   // longest line of a legend, characters; 0 no limit
  std::string caption;
  std::vector<double> least_lengths;  // by node (may be empty): what else is drawn on its branch
};

/// Where each node stands: a terminal at the end of its branch, an internal node at its fork.
using node_places = std::vector<std::pair<double, double>>;

/// Writes the tree into the open SVG file, whose last group stays open, and returns the places of
/// its nodes. `labels` by taxon, `node_texts` by node.
node_places draw_svg_tree(const_tree_span tree, int ntax, int outgroup, bool second_largest_first,
                          std::span<const std::string> labels,
                          std::span<const std::string> node_texts, const svg_options& options);

}  // namespace zeb
