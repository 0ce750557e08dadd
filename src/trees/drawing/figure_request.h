// What is asked of a figure of a tree by the commands that write one: its file, and how it looks.
#pragma once

#include <string>

#include "trees/drawing/svg_tree.h"

namespace zeb {

struct figure_request {
  std::string file_name;
  svg_options options;
  int coordinate_array = -1;  // the user's array for the places of the nodes; -1 none
};

/// The name of the file and the options after it, up to the semicolon, on top of `defaults`.
figure_request read_figure_request(const svg_options& defaults);
/// Ends the open figure; error when it couldn't be written.
void end_figure();
/// The same, unless the user's array gets the places of the nodes: then it stays open for
/// additions.
void end_figure(const figure_request& request, const node_places& places);

}  // namespace zeb
