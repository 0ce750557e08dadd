// What higher rooms lend to landmarks at start-up.
#pragma once

#include <vector>

#include "trees/drawing/figure_request.h"

namespace zeb {

/// A figure of positions in all nodes.
struct landmark_map {
  std::vector<int> trees;
  std::vector<int> characters;  // landmark configurations
  bool together = false;        // all configurations of a tree in one figure
  figure_request figure;
};

struct landmark_hooks {
  /// Are scores fits? Then points count as they are, without automatic factors.
  bool (*implied_weights)() = nullptr;
  void (*draw_map)(const landmark_map& map) = nullptr;
};
extern landmark_hooks hooks_of_landmarks;

}  // namespace zeb
