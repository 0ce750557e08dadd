#include "mapping/landmark_measures.h"

#include <algorithm>
#include <vector>

#include "base/indices.h"
#include "landmarks/fermat.h"
#include "landmarks/landmark_scores.h"
#include "matrix/matrix.h"
#include "trees/tree_record.h"

namespace zeb {
namespace {

class measured_scores : public landmark_measure {
 public:
  measured_scores(std::span<const std::uint8_t> characters,
                  std::span<const std::uint8_t> ignored_taxa)
      : scorer_(characters, ignored_taxa) {}

  void optimise(const_tree_span tree) override { scorer_.optimise(tree); }

  double score(int character) const override {
    const auto& all = scorer_.data().configurations;
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (all[i].character == character) return scorer_.score_of_configuration(i);
    }
    return 0;
  }

  std::vector<point> points(int character) const override {
    std::vector<point> found;
    const auto& records = scorer_.data().points;
    for (std::size_t i = 0; i < records.size(); ++i) {
      const point_record& one = records[i];
      if (one.character != character) continue;
      found.push_back({scorer_.homoplasy(i), one.weight, static_cast<double>(one.counted.size()),
                       static_cast<double>(one.count_of_taxa)});
    }
    return found;
  }

 private:
  landmark_scorer scorer_;
};

}  // namespace

std::unique_ptr<landmark_measure> measure_landmarks(std::span<const std::uint8_t> characters,
                                                    std::span<const std::uint8_t> ignored_taxa) {
  return std::make_unique<measured_scores>(characters, ignored_taxa);
}

void mark_moved_landmarks(const_tree_span tree, std::span<const std::uint8_t> characters,
                          std::span<std::uint8_t> marks) {
  const int limit = node_limit(tree, matrix.ntax);
  for (int v = matrix.ntax + 1; v < limit; ++v)
    if (tree[at(v)] == matrix.ntax) marks[at(v)] = 1;
  for_each_landmark(tree, characters,
                    [&](const point_record& point, std::span<const landmark_point> positions) {
                      for (int v = matrix.ntax + 1; v < limit; ++v) {
                        const landmark_point& here = positions[at(v)];
                        const landmark_point& above = positions[at(tree[at(v)])];
                        if (point.multiplier() == 0 || is_missing(here) || is_missing(above))
                          continue;
                        marks[at(v)] |= distance(here, above) > same_place * point.span;
                      }
                    });
}

}  // namespace zeb
