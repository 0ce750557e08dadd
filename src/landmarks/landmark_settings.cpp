#include "landmarks/landmark_settings.h"

#include "base/indices.h"
#include "matrix/landmarks.h"

namespace zeb {

landmark_state lmark;

void set_landmark_settings(const landmark_settings& settings) { lmark.settings = settings; }

void make_point_choices() {
  lmark.choices.clear();
  for (const landmark_configuration& one : landmark_configurations())
    lmark.choices.emplace_back(at(one.points));
}

void set_point_choice(int configuration, int point, const point_choice& choice) {
  lmark.choices[at(configuration)][at(point)] = choice;
}

}  // namespace zeb
