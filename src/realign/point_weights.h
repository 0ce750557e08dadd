// What each point of a configuration counts when shapes are laid on each other.
#pragma once

#include <vector>

namespace zeb {

/// The weights that the user gave to points, by landmark.
std::vector<double> weights_of_points(int character);

}  // namespace zeb
