#include "landmarks/registration.h"

#include <algorithm>
#include <span>

#include "landmarks/hooks.h"
#include "landmarks/landmark_memory.h"
#include "landmarks/landmark_settings.h"
#include "landmarks/lmark_text.h"
#include "landmarks/point_minima.h"
#include "language/list_kinds.h"
#include "language/methods.h"
#include "matrix/hooks.h"
#include "matrix/landmarks.h"
#include "matrix/matrix_layout.h"

namespace zeb {

landmark_hooks hooks_of_landmarks;

namespace {

int most_landmarks() {
  int most = 0;
  for (const landmark_configuration& one : landmark_configurations())
    most = std::max(most, one.points);
  return most;
}

}  // namespace

void register_landmarks() {
  hooks_of_matrix.landmark_lengths = [](int character, std::span<const std::uint8_t> taxa,
                                        double* least, double* most) {
    const length_range range = range_of_configuration(character, taxa);
    *least = range.least;
    *most = range.most;
  };
  hooks_of_matrix.landmark_commands = landmark_choices_as_commands;
  add_methods(methods_part::choices, lmark_settings_as_commands);
  add_new_matrix_hook(make_point_choices);
  add_new_matrix_hook(check_landmark_memory);
  register_list_kind({.noun = "landmark", .count = most_landmarks});
  add_matrix_gone_hook(make_point_choices);
}

}  // namespace zeb
