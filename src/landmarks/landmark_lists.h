// Trees, landmark configurations and landmarks as commands name them.
#pragma once

#include <cstdint>
#include <vector>

namespace zeb {

/// "N/C/L": trees, landmark configurations (by their order), landmarks; all where a list is
/// missing.
struct landmark_lists {
  std::vector<int> trees;
  std::vector<int> configurations;
  std::vector<std::uint8_t> landmarks;  // a byte each, up to the most of a configuration
};
landmark_lists read_landmark_lists(bool with_trees, bool with_landmarks);
/// "C": error for a character that isn't a landmark configuration.
std::vector<int> read_configurations();

}  // namespace zeb
