#include "landmarks/registration.h"

#include "landmarks/hooks.h"
#include "landmarks/landmark_settings.h"
#include "matrix/matrix_layout.h"

namespace zeb {

landmark_hooks hooks_of_landmarks;

void register_landmarks() {
  add_new_matrix_hook(make_point_choices);
  add_matrix_gone_hook(make_point_choices);
}

}  // namespace zeb
