#include "matrix/landmarks.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/matrix.h"

namespace zeb {

bool can_hold(const landmark_point& point) {
  const auto fits = [](double v) { return v >= least_coordinate && v <= most_coordinate; };
  return fits(point.x) && fits(point.y) && fits(point.z);
}

std::span<const landmark_configuration> landmark_configurations() { return matrix.landmarks; }

const landmark_configuration* configuration_of(int character) {
  return find_configuration(matrix.landmarks, character);
}

std::span<const landmark_point> landmarks_of(int character, int taxon) {
  const landmark_configuration* const found = configuration_of(character);
  ALWAYS_CHECK(found && taxon >= 0 && taxon < matrix.ntax, "landmarks of a configuration");
  return points_of(*found, taxon);
}

std::span<landmark_point> changeable_landmarks_of(int character, int taxon) {
  const landmark_configuration* const found = configuration_of(character);
  ALWAYS_CHECK(found && taxon >= 0 && taxon < matrix.ntax, "landmarks of a configuration");
  landmark_configuration& own =
      matrix.landmarks[static_cast<std::size_t>(found - matrix.landmarks.data())];
  return std::span(own.coordinates).subspan(at(taxon) * at(own.points), at(own.points));
}

void add_landmark_configuration(int character, int dimensions, int points) {
  ALWAYS_CHECK(!configuration_of(character), "a configuration is added once");
  landmark_configuration added = {character, dimensions, points, {}};
  added.coordinates.assign(at(matrix.ntax) * at(points), missing_point);
  auto& all = matrix.landmarks;
  all.insert(std::ranges::lower_bound(all, character, {}, &landmark_configuration::character),
             std::move(added));
}

void shrink_landmarks(int ntax) {
  for (landmark_configuration& one : matrix.landmarks)
    one.coordinates.resize(at(ntax) * at(one.points));
}

}  // namespace zeb
