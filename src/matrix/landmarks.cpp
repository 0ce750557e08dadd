#include "matrix/landmarks.h"

#include <algorithm>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

landmark_configuration* find_configuration(int character) {
  auto& all = matrix.landmarks;
  const auto found =
      std::ranges::lower_bound(all, character, {}, &landmark_configuration::character);
  return found != all.end() && found->character == character ? &*found : nullptr;
}

}  // namespace

std::span<const landmark_configuration> landmark_configurations() { return matrix.landmarks; }

const landmark_configuration* configuration_of(int character) {
  return find_configuration(character);
}

std::span<landmark_point> changeable_landmarks_of(int character, int taxon) {
  landmark_configuration* found = find_configuration(character);
  ALWAYS_CHECK(found && taxon >= 0 && taxon < matrix.ntax, "landmarks of a configuration");
  return std::span(found->coordinates).subspan(at(taxon) * at(found->points), at(found->points));
}

std::span<const landmark_point> landmarks_of(int character, int taxon) {
  return changeable_landmarks_of(character, taxon);
}

void add_landmark_configuration(int character, int dimensions, int points) {
  ALWAYS_CHECK(!find_configuration(character), "a configuration is added once");
  landmark_configuration added = {character, dimensions, points, {}};
  added.coordinates.assign(at(matrix.ntax) * at(points), missing_point);
  auto& all = matrix.landmarks;
  all.insert(std::ranges::lower_bound(all, character, {}, &landmark_configuration::character),
             std::move(added));
}

}  // namespace zeb
