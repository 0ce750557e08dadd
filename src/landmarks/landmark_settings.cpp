#include "landmarks/landmark_settings.h"

#include <utility>

#include "base/indices.h"
#include "matrix/landmarks.h"

namespace zeb {

landmark_state lmark;

void set_landmark_settings(const landmark_settings& settings) { lmark.settings = settings; }

void make_point_choices() {
  lmark.choices.clear();
  lmark.wires.assign(landmark_configurations().size(), {});
  lmark.low_memory_forced = false;
  for (const landmark_configuration& one : landmark_configurations())
    lmark.choices.emplace_back(at(one.points));
}

void set_point_choice(int configuration, int point, const point_choice& choice) {
  lmark.choices[at(configuration)][at(point)] = choice;
}

void lower_chosen_minimum(int character, int point, double minimum) {
  const auto all = landmark_configurations();
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (all[i].character == character) lmark.choices[i][at(point)].minimum = minimum;
  }
}

void set_wires(int configuration, std::vector<landmark_wire> wires) {
  lmark.wires[at(configuration)] = std::move(wires);
}

void force_low_memory(bool forced) { lmark.low_memory_forced = forced; }

}  // namespace zeb
