#include "matrix/landmark_points.h"

#include <algorithm>

namespace zeb {

bool all_missing(std::span<const landmark_point> points) {
  return std::ranges::all_of(points, [](const landmark_point& p) { return is_missing(p); });
}

const landmark_configuration* find_configuration(std::span<const landmark_configuration> all,
                                                 int character) {
  const auto found =
      std::ranges::lower_bound(all, character, {}, &landmark_configuration::character);
  return found != all.end() && found->character == character ? &*found : nullptr;
}

}  // namespace zeb
