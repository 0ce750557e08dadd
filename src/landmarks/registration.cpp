#include "landmarks/registration.h"

#include "landmarks/hooks.h"
#include "landmarks/landmark_settings.h"
#include "landmarks/point_minima.h"
#include "matrix/hooks.h"
#include "matrix/matrix_layout.h"

namespace zeb {

landmark_hooks hooks_of_landmarks;

void register_landmarks() {
  hooks_of_matrix.landmark_lengths = [](int character, std::span<const std::uint8_t> taxa,
                                        double* least, double* most) {
    const length_range range = range_of_configuration(character, taxa);
    *least = range.least;
    *most = range.most;
  };
  add_new_matrix_hook(make_point_choices);
  add_matrix_gone_hook(make_point_choices);
}

}  // namespace zeb
