#include "realign/point_weights.h"

#include <algorithm>

#include "base/indices.h"
#include "landmarks/landmark_settings.h"
#include "matrix/landmarks.h"

namespace zeb {

std::vector<double> weights_of_points(int character) {
  const auto all = landmark_configurations();
  const auto found =
      std::ranges::lower_bound(all, character, {}, &landmark_configuration::character);
  std::vector<double> weights(at(found->points), 1);
  const auto number = static_cast<std::size_t>(found - all.begin());
  if (number >= lmark.choices.size()) return weights;
  const std::vector<point_choice>& choices = lmark.choices[number];
  for (std::size_t p = 0; p < weights.size() && p < choices.size(); ++p)
    weights[p] = choices[p].weight;
  return weights;
}

}  // namespace zeb
