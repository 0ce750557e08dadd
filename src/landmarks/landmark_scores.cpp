#include "landmarks/landmark_scores.h"

#include <algorithm>
#include <numeric>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "landmarks/point_minima.h"
#include "landmarks/point_optimiser.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"

namespace zeb {

landmark_scorer::landmark_scorer(std::span<const std::uint8_t> characters,
                                 std::span<const std::uint8_t> ignored_taxa) {
  std::vector<int> taxa(at(matrix.ntax));
  std::iota(taxa.begin(), taxa.end(), 0);
  for (std::size_t t = 0; t < ignored_taxa.size() && t < taxa.size(); ++t) {
    if (ignored_taxa[t]) taxa[t] = -1;
  }
  data_ = gather_points(characters, taxa);
  lengths_.resize(data_.points.size());
}

void landmark_scorer::optimise(const_tree_span tree) {
  if (data_.configurations.empty()) return;
  require_basal_dichotomy(tree, matrix.ntax);
  const landmark_tree shape = landmark_tree_of(tree, matrix.ntax);
  point_optimiser optimiser(lmark.settings);
  for (std::size_t i = 0; i < data_.points.size(); ++i) {
    check_interrupt();
    lengths_[i] = optimiser.optimise(shape, data_.points[i]);
  }
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

std::vector<std::vector<landmark_point>> positions_of_configuration(const_tree_span tree,
                                                                    int character) {
  require_basal_dichotomy(tree, matrix.ntax);
  std::vector<std::uint8_t> one(at(matrix.nchar), 0);
  one[at(character)] = 1;
  const landmark_points data = gather_points(one);
  const landmark_tree shape = landmark_tree_of(tree, matrix.ntax);
  point_optimiser optimiser(lmark.settings);
  std::vector<std::vector<landmark_point>> found;
  for (const point_record& point : data.points) {
    check_interrupt();
    optimiser.optimise(shape, point);
    found.emplace_back(optimiser.positions().begin(), optimiser.positions().end());
  }
  return found;
}

std::vector<landmark_point> positions_of_landmark(const_tree_span tree, int character,
                                                  int landmark) {
  const landmark_configuration* const configuration = configuration_of(character);
  ALWAYS_CHECK(configuration && landmark >= 0 && landmark < configuration->points, "a landmark");
  return positions_of_configuration(tree, character)[at(landmark)];
}

}  // namespace zeb
