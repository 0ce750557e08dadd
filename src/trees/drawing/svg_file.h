// The SVG file being written. At most one is open; it may stay open between commands, so that
// drawings can be added to a tree.
#pragma once

#include <string>
#include <string_view>

#include "base/output_file.h"

namespace zeb {

/// Written by the functions of this file only.
struct svg_file_state {
  output_file file;
  std::string drawn;                                // what follows the head, which tells the size
  double left = 0, top = 0, right = 0, bottom = 0;  // what the page must show, pixels
  bool takes_additions = false;                     // `ttags &+` may add
};
extern svg_file_state svg_file;

/// Opens a new drawing, closing the one that may be open. Error "Cannot open file" with the name.
void open_svg_file(const std::string& name, std::string_view title);
/// Appends to the open file.
void write_svg(std::string_view text);
/// Makes sure that the page shows the rectangle.
void grow_svg_page(double left, double top, double right, double bottom);
/// From now on `ttags &+` may add to the open drawing: the places of its nodes were saved.
void let_svg_file_take_additions();
/// Ends the drawing, with the page as large as all that it holds. Nothing without an open file.
/// False when something couldn't be written: then there is no new file.
bool close_svg_file();
/// The same when the process ends: what couldn't be written is noted as lost, and a drawing that
/// an error ended is dropped.
void abandon_svg_file();

}  // namespace zeb
