#include "landmarks/landmark_scores.h"

#include <algorithm>
#include <numeric>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "landmarks/landmark_workers.h"
#include "landmarks/point_minima.h"
#include "landmarks/point_optimiser.h"
#include "landmarks/search_settings.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// A user's minimum that a tree is below gives way.
bool lower_minimum(point_record& point, double length) {
  if (point.chosen_minimum < 0 || length >= point.chosen_minimum * (1 - 1e-6)) return false;
  warning_f(
      "Ch. %i, landmark %i, user min. set to %6f, but found a tree with %6f\nMinimum will be "
      "updated (this may affect previous calculations).",
      point.character, point.landmark, point.chosen_minimum, length);
  point.chosen_minimum = length;
  lower_chosen_minimum(point.character, point.landmark, length);
  return true;
}

}  // namespace

landmark_scorer::landmark_scorer(std::span<const std::uint8_t> characters,
                                 std::span<const std::uint8_t> ignored_taxa) {
  std::vector<int> taxa(at(matrix.ntax));
  std::iota(taxa.begin(), taxa.end(), 0);
  for (std::size_t t = 0; t < ignored_taxa.size() && t < taxa.size(); ++t) {
    if (ignored_taxa[t]) taxa[t] = -1;
  }
  data_ = gather_points(characters, taxa);
  groups_ = groups_of_points(data_.points);
  lengths_.resize(data_.points.size());
}

void landmark_scorer::optimise(const_tree_span tree) {
  if (data_.configurations.empty()) return;
  require_basal_dichotomy(tree, matrix.ntax);
  const landmark_tree shape = landmark_tree_of(tree, matrix.ntax);
  check_interrupt();
  const auto place = [&](int part) {
    const std::vector<int>& group = groups_[at(part)];
    point_optimiser optimiser(lmark.settings);
    optimiser.optimise(shape, data_.points, group);
    for (std::size_t l = 0; l < group.size(); ++l) lengths_[at(group[l])] = optimiser.length(l);
  };
  const int parts = static_cast<int>(groups_.size());
  // Reports are quick, so threads must be wished for.
  if (landmark_searching.threads > 1) {
    share_out(parts, place);
  } else {
    for (int part = 0; part < parts; ++part) place(part);
  }
  for (std::size_t i = 0; i < data_.points.size(); ++i)
    if (lower_minimum(data_.points[i], lengths_[i])) minima_.clear();
}

double landmark_scorer::homoplasy(std::size_t point) const {
  if (minima_.empty()) {
    for (const point_record& p : data_.points) minima_.push_back(minimum_of_point(p));
  }
  return std::max(0.0, lengths_[point] - minima_[point]);
}

double landmark_scorer::score_of_configuration(std::size_t configuration) const {
  const configuration_record& one = data_.configurations[configuration];
  double sum = 0;
  for (int i = one.first; i < one.end; ++i)
    sum += lengths_[at(i)] * data_.points[at(i)].multiplier();
  return sum;
}

double landmark_scorer::score() const {
  double sum = 0;
  for (std::size_t i = 0; i < data_.configurations.size(); ++i)
    sum += data_.configurations[i].weight * score_of_configuration(i);
  return sum;
}

void for_each_landmark(const_tree_span tree, std::span<const std::uint8_t> characters,
                       const landmark_visitor& visit) {
  require_basal_dichotomy(tree, matrix.ntax);
  const landmark_points data = gather_points(characters);
  const landmark_tree shape = landmark_tree_of(tree, matrix.ntax);
  point_optimiser optimiser(lmark.settings);
  for (std::size_t p = 0; p < data.points.size(); ++p) {
    check_interrupt();
    const int alone = static_cast<int>(p);
    optimiser.optimise(shape, data.points, {&alone, 1});
    visit(data.points[p], optimiser.positions(0));
  }
}

std::vector<std::vector<landmark_point>> positions_of_configuration(const_tree_span tree,
                                                                    int character) {
  std::vector<std::uint8_t> one(at(matrix.nchar), 0);
  one[at(character)] = 1;
  std::vector<std::vector<landmark_point>> found;
  for_each_landmark(tree, one, [&](const point_record&, std::span<const landmark_point> positions) {
    found.emplace_back(positions.begin(), positions.end());
  });
  return found;
}

std::vector<landmark_point> positions_of_landmark(const_tree_span tree, int character,
                                                  int landmark) {
  const landmark_configuration* const configuration = configuration_of(character);
  ALWAYS_CHECK(configuration && landmark >= 0 && landmark < configuration->points, "a landmark");
  return positions_of_configuration(tree, character)[at(landmark)];
}

}  // namespace zeb
