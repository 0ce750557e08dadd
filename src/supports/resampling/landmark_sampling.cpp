#include "supports/resampling/landmark_sampling.h"

#include "base/errors.h"
#include "base/indices.h"
#include "engine/packing/packed_matrix.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

struct active_characters {
  int landmarks = 0;
  int others = 0;
};

active_characters count_active() {
  active_characters count;
  for (const character_record& record : matrix.characters)
    if (record.active && record.weight > 0)
      ++(record.type == landmark_data ? count.landmarks : count.others);
  return count;
}

bool draws_single_landmarks() {
  const active_characters count = count_active();
  return count.landmarks > 0 && count.others == 0 && !lmark.settings.sample_configurations;
}

}  // namespace

bool landmarks_are_active() { return count_active().landmarks > 0; }

void warn_of_whole_configurations() {
  const active_characters count = count_active();
  if (count.landmarks == 0 || draws_single_landmarks()) return;
  if (count.others > 0 && !lmark.settings.sample_configurations)
    warning(
        "Sampling will be changed to entire configurations\n(with landmark and traditional "
        "characters,\ncan't sample individual landmarks)");
  if (count.landmarks == 1 && count.others == 0)
    warning("You will be resampling whole configurations --but you have just one");
}

sampled_points::sampled_points() {
  if (!draws_single_landmarks()) return;
  const auto all = landmark_configurations();
  for (std::size_t i = 0; i < all.size(); ++i) {
    const character_record& record = matrix.characters[at(all[i].character)];
    if (!record.active || record.weight == 0) continue;
    for (int p = 0; p < all[i].points; ++p)
      points_.push_back({static_cast<int>(i), p, lmark.choices[i][at(p)]});
  }
}

sampled_points::~sampled_points() {
  for (const point& one : points_) set_point_choice(one.configuration, one.number, one.own);
  if (!points_.empty()) drop_packed_data();
}

void sampled_points::set(const sample& drawn) {
  for (std::size_t i = 0; i < points_.size(); ++i) {
    point_choice choice = points_[i].own;
    choice.weight *= drawn.factors[i];
    set_point_choice(points_[i].configuration, points_[i].number, choice);
  }
  drop_packed_data();
  packed_matrix(true);
}

}  // namespace zeb
