// The graphic forms of `ttags`.
#pragma once

#include <string>

namespace zeb {

struct option_table;

/// From behind the "&": a file name with options, "+" with drawing commands, or nothing, which
/// closes the open drawing.
void graphic_tags();
/// "&+": adds lines, rectangles and texts to the open drawing.
void add_to_drawing();
extern const option_table addition_options;

}  // namespace zeb
