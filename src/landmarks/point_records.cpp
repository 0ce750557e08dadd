#include "landmarks/point_records.h"

#include <algorithm>
#include <numeric>

#include "base/indices.h"
#include "landmarks/fermat.h"
#include "landmarks/hooks.h"
#include "landmarks/point_grid.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// The ends of one axis over some values (at least one), which get sorted.
struct axis_frame {
  double least;
  double most;
};
axis_frame frame_of(std::vector<double>& values, bool shrink) {
  std::ranges::sort(values);
  const std::size_t n = values.size();
  if (!shrink || n < 4 || !(values[n - 2] > values[1])) return {values[0], values[n - 1]};
  return {(values[0] + values[1]) / 2, (values[n - 1] + values[n - 2]) / 2};
}

double largest_distance(std::span<const landmark_point> points) {
  double largest = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j)
      largest = std::max(largest, squared_distance(points[i], points[j]));
  }
  return std::sqrt(largest);
}

/// Frame, span and effort by the positions that count.
void measure_by(point_record& point, const landmark_settings& settings) {
  const std::span<const landmark_point> positions = point.counted;
  point.effort = point_effort::none;
  point.span = point.largest_range = 0;
  if (positions.empty()) return;
  point.effort = point_effort::full;
  std::vector<double> values;
  for (double landmark_point::*axis :
       {&landmark_point::x, &landmark_point::y, &landmark_point::z}) {
    values.clear();
    for (const landmark_point& p : positions) values.push_back(p.*axis);
    const axis_frame whole = frame_of(values, false);
    point.largest_range = std::max(point.largest_range, whole.most - whole.least);
    const axis_frame frame = frame_of(values, settings.shrink);
    point.least.*axis = frame.least;
    point.most.*axis = frame.most;
  }
  point.span = largest_distance(positions);
  if (settings.precision > 0 && point.largest_range / settings.precision < 0.5)
    point.effort = point_effort::star;
}

void fill_candidate_distances(point_record& point, const landmark_settings& settings) {
  point.distances.clear();
  if (settings.go_to_optimum() || point.effort != point_effort::full) return;
  if (settings.low_memory || lmark.low_memory_forced) return;
  const point_grid grid = grid_over(point.least, point.most, settings.cells);
  fill_distances(candidates_of(point.terminals, grid, settings), point.distances);
}

std::vector<landmark_point> present_of(std::span<const landmark_point> points) {
  std::vector<landmark_point> found;
  std::ranges::copy_if(points, std::back_inserter(found),
                       [](const landmark_point& p) { return !is_missing(p); });
  return found;
}

/// A configuration counts about as much as a step of another character.
void set_factors(std::span<point_record> points, std::span<const point_choice> choices) {
  const bool implied = hooks_of_landmarks.implied_weights && hooks_of_landmarks.implied_weights();
  double largest = 0;
  for (const point_record& p : points) largest = std::max(largest, p.span);
  for (point_record& p : points) {
    const point_choice& choice = choices[at(p.landmark)];
    p.weight = choice.weight;
    p.chosen_minimum = choice.minimum;
    const double span = lmark.settings.in_scale ? p.span : largest;
    const double automatic = span > 0 ? 1 / (span * static_cast<double>(points.size())) : 0;
    p.factor = implied ? 1 : choice.factor >= 0 ? choice.factor : automatic;
    if (p.multiplier() == 0) p.effort = point_effort::none;
  }
}

}  // namespace

void measure_point(point_record& point, const landmark_settings& settings) {
  point.counted = present_of(point.terminals);
  point.count_of_taxa = static_cast<int>(point.terminals.size());
  measure_by(point, settings);
  fill_candidate_distances(point, settings);
}

landmark_points gather_points(std::span<const std::uint8_t> characters, std::span<const int> taxa,
                              std::span<const std::uint8_t> counts) {
  if (counts.empty()) counts = matrix.taxon_active.first(at(matrix.ntax));
  landmark_points found;
  const auto configurations = landmark_configurations();
  for (std::size_t i = 0; i < configurations.size(); ++i) {
    const landmark_configuration& one = configurations[i];
    if (!characters[at(one.character)]) continue;
    const int first = static_cast<int>(found.points.size());
    for (int l = 0; l < one.points; ++l) {
      point_record point;
      point.character = one.character;
      point.landmark = l;
      point.dimensions = one.dimensions;
      for (const int taxon : taxa)
        point.terminals.push_back(taxon < 0 ? missing_point
                                            : landmarks_of(one.character, taxon)[at(l)]);
      for (int t = 0; t < matrix.ntax; ++t) {
        if (!counts[at(t)]) continue;
        ++point.count_of_taxa;
        const landmark_point& p = landmarks_of(one.character, t)[at(l)];
        if (!is_missing(p)) point.counted.push_back(p);
      }
      measure_by(point, lmark.settings);
      found.points.push_back(std::move(point));
    }
    const std::span<point_record> own = std::span(found.points).subspan(at(first));
    set_factors(own, lmark.choices[i]);
    for (point_record& p : own) fill_candidate_distances(p, lmark.settings);
    found.configurations.push_back(
        {one.character, first, static_cast<int>(found.points.size()),
         static_cast<double>(matrix.characters[at(one.character)].weight)});
  }
  return found;
}

landmark_points gather_points(std::span<const std::uint8_t> characters) {
  std::vector<int> taxa(at(matrix.ntax));
  std::iota(taxa.begin(), taxa.end(), 0);
  return gather_points(characters, taxa);
}

}  // namespace zeb
