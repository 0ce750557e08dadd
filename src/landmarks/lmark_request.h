// What one `lmark` command asks for, and the readers of its arguments.
#pragma once

#include <functional>
#include <vector>

#include "landmarks/landmark_settings.h"
#include "landmarks/search_settings.h"

namespace zeb {

struct lmark_request {
  landmark_settings settings;
  landmark_search_settings searching;
  /// What is done when all has been read, with the settings in force.
  std::vector<std::function<void()>> work;
};

// What follows these keywords.
void read_termpoints(lmark_request& request);
void read_nest(lmark_request& request);
void read_maxiters(lmark_request& request);
void read_ambig(lmark_request& request);
void read_factors(lmark_request& request);
void read_weights(lmark_request& request);
void read_minima(lmark_request& request);
void read_connections(lmark_request& request);
void read_rescale(lmark_request& request);
void read_swapped_axes(lmark_request& request);
void read_numlands(lmark_request& request);
void read_dims(lmark_request& request);
void read_list_of_landmarks(lmark_request& request);
void read_landmark_scores(lmark_request& request);
void read_map(lmark_request& request);
void read_multimap(lmark_request& request);

}  // namespace zeb
