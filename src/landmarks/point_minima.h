// How short and how long the branches of any tree can make a point.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "landmarks/landmark_settings.h"
#include "landmarks/point_records.h"
#include "matrix/character_steps.h"

namespace zeb {

/// Those that aren't missing, each position once.
std::vector<landmark_point> distinct_points(std::span<const landmark_point> points);
/// A bound from below: the largest sum of distances of three terminals from their Fermat point.
double largest_triplet(std::span<const landmark_point> terminals);
/// What homoplasy counts from: the user's choice, or else the bound.
double minimum_of_point(const point_record& point);
/// All terminals joined in one node: no tree needs more.
double length_of_star(std::span<const landmark_point> terminals);
/// The least and most that a configuration costs for the flagged taxa (a byte each), approximately;
/// with the factors and weights of points.
length_range range_of_configuration(int character, std::span<const std::uint8_t> taxa);

}  // namespace zeb
