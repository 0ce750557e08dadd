// A tree with its branches coloured by the states of one character, and a legend of the states.
#pragma once

#include <string>

#include "mapping/node_states.h"
#include "trees/drawing/figure_request.h"

namespace zeb {

/// How it looks without options: branches broad enough to tell their colours.
svg_options map_figure_defaults();
struct figure_titles {
  std::string title;    // of the document, which viewers show
  std::string heading;  // of the legend
};
/// Writes the figure under `file_name` (that of the request, or one of several made from it).
void draw_map_figure(const figure_request& request, const std::string& file_name,
                     const_tree_span tree, const mapped_character& mapped,
                     const figure_titles& titles);

}  // namespace zeb
