// What stands below figures of configurations: what colours mean, numbers and names of landmarks,
// the scale.
#pragma once

#include <string>
#include <vector>

#include "mapping/configurations/shape_painter.h"
#include "mapping/figure_legend.h"

namespace zeb {

/// The key of one character: the mean of all shapes with the numbers of the landmarks.
struct shape_key {
  int character = 0;
  std::vector<std::vector<landmark_point>> shapes;
  double pixels_per_unit = 1;  // of the boxes that it explains
};
/// The legend with its heading, then the keys side by side.
void write_shape_legend(const std::string& heading, const std::vector<legend_entry>& entries,
                        const std::vector<shape_key>& keys, const svg_options& options);

/// "skull (character 3)", or "character 3".
std::string name_of_configuration(int character);

}  // namespace zeb
