// Figures in which the configurations of ancestors and descendants can be compared. A configuration
// is drawn in the frame of all of them: the same place in two boxes means the same coordinates, and
// the same length the same distance.
#pragma once

#include <string>
#include <vector>

#include "landmarks/hooks.h"
#include "mapping/configurations/node_shapes.h"
#include "trees/drawing/figure_request.h"

namespace zeb {

/// The figures of `lmark map` and `lmark multimap`, one for each tree and character or for each
/// tree.
void draw_landmark_map(const landmark_map& map);

/// Two configurations to compare, and what is said of them.
struct shape_pair {
  std::string name;
  std::vector<landmark_point> from;  // empty: none
  std::vector<landmark_point> to;
};
struct shape_boxes {
  int character = 0;
  std::string title;
  std::string meaning_of_from;
  std::vector<shape_pair> pairs;
};
/// Large boxes side by side, with arrows from landmark to landmark and a key of their numbers.
void draw_shape_boxes(const figure_request& request, const std::string& file_name,
                      const shape_boxes& boxes);

}  // namespace zeb
