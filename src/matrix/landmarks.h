// The landmark characters of the matrix.
#pragma once

#include <span>

#include "matrix/landmark_points.h"

namespace zeb {

/// Beyond this, sums and squares of coordinates would say nothing any more.
constexpr double most_coordinate = 1e12;
/// Can a point lie there? (Coordinates below `least_coordinate` would make it a missing one.)
bool can_hold(const landmark_point& point);

/// All configurations of the matrix, by character.
std::span<const landmark_configuration> landmark_configurations();
/// The configuration of a character, or null.
const landmark_configuration* configuration_of(int character);
/// The points of a taxon, to read or to change; `drop_packed_data` is the caller's after a change.
std::span<const landmark_point> landmarks_of(int character, int taxon);
std::span<landmark_point> changeable_landmarks_of(int character, int taxon);
/// Makes the configuration with all points missing; readers fill it. The character's record gets
/// its type from the reader.
void add_landmark_configuration(int character, int dimensions, int points);
/// Only the first taxa stay, while a matrix is read.
void shrink_landmarks(int ntax);

}  // namespace zeb
