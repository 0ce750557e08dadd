#include "realign/alignment.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "matrix/matrix.h"
#include "realign/point_weights.h"
#include "realign/resistant_fit.h"
#include "realign/superimpose.h"

namespace zeb {
namespace {

struct shared_points {
  std::vector<landmark_point> reference;
  std::vector<landmark_point> target;
  std::vector<double> weights;
};

shared_points points_of_both(std::span<const landmark_point> reference,
                             std::span<const landmark_point> target,
                             std::span<const double> weights) {
  shared_points shared;
  for (std::size_t p = 0; p < target.size(); ++p) {
    if (is_missing(reference[p]) || is_missing(target[p])) continue;
    shared.reference.push_back(reference[p]);
    shared.target.push_back(target[p]);
    shared.weights.push_back(weights[p]);
  }
  return shared;
}

similarity baseline_motion(std::span<const landmark_point> reference,
                           std::span<const landmark_point> target, const reference_alignment& how) {
  const landmark_point& from = target[at(how.first_point)];
  const landmark_point& to = reference[at(how.first_point)];
  const landmark_point p = difference(target[at(how.second_point)], from);
  const landmark_point q = difference(reference[at(how.second_point)], to);
  const double length = std::sqrt(dot_product(p, p));
  const double wanted = std::sqrt(dot_product(q, q));
  similarity motion;
  if (length > 0) {
    const double both = length * wanted;
    motion.turn = turn_in_plane(dot_product(p, q) / both, (p.x * q.y - p.y * q.x) / both);
    motion.scale = wanted / length;
  }
  return motion_about(motion, from, to);
}

class reference_aligner {
 public:
  reference_aligner(const reference_alignment& how, const landmark_configuration& configuration)
      : how_(how),
        configuration_(configuration),
        weights_(weights_of_points(configuration.character)) {}

  /// The motion of a taxon; none where it must stay as it is.
  std::optional<similarity> motion_of(int taxon, alignment_outcome& outcome) const {
    const auto reference = landmarks_of(configuration_.character, outcome.reference);
    const auto target = landmarks_of(configuration_.character, taxon);
    if (how_.kind == alignment_kind::baseline) return baseline(reference, target, taxon, outcome);
    const shared_points shared = points_of_both(reference, target, weights_);
    if (shared.target.size() < at(configuration_.dimensions)) {
      outcome.too_few_points.push_back(taxon);
      return std::nullopt;
    }
    if (how_.kind == alignment_kind::resistant)
      return resistant_motion(shared.reference, shared.target, how_.scales);
    return superimpose({configuration_.dimensions, shared.reference, shared.target, shared.weights},
                       {how_.scales, how_.turns});
  }

 private:
  std::optional<similarity> baseline(std::span<const landmark_point> reference,
                                     std::span<const landmark_point> target, int taxon,
                                     alignment_outcome& outcome) const {
    const landmark_point& first = target[at(how_.first_point)];
    const landmark_point& second = target[at(how_.second_point)];
    if (is_missing(first) || is_missing(second)) {
      outcome.too_few_points.push_back(taxon);
      return std::nullopt;
    }
    if (distance_of(first, second) == 0) outcome.without_baseline.push_back(taxon);
    return baseline_motion(reference, target, how_);
  }

  const reference_alignment& how_;
  const landmark_configuration& configuration_;
  std::vector<double> weights_;  // of points
};

}  // namespace

bool lacks_configuration(int character, int taxon) {
  return std::ranges::all_of(landmarks_of(character, taxon),
                             [](const landmark_point& p) { return is_missing(p); });
}

alignment_outcome align_with_reference(const reference_alignment& how, int character) {
  alignment_outcome outcome;
  outcome.reference = how.reference;
  if (lacks_configuration(character, how.reference)) {
    outcome.reference = 0;
    while (outcome.reference < matrix.ntax && lacks_configuration(character, outcome.reference))
      ++outcome.reference;
    if (outcome.reference == matrix.ntax) return {};
  }
  const reference_aligner aligner(how, *configuration_of(character));
  std::vector<std::optional<similarity>> motions(at(matrix.ntax));
  for (int t = 0; t < matrix.ntax; ++t) {
    check_interrupt();
    if (t != outcome.reference && !lacks_configuration(character, t))
      motions[at(t)] = aligner.motion_of(t, outcome);
  }
  for (int t = 0; t < matrix.ntax; ++t)
    if (motions[at(t)]) move_points(changeable_landmarks_of(character, t), *motions[at(t)]);
  return outcome;
}

}  // namespace zeb
