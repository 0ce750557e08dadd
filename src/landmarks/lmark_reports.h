// What `lmark` shows: configurations, weights, scores of landmarks, positions, settings.
#pragma once

#include <string>
#include <string_view>

#include "landmarks/landmark_lists.h"
#include "landmarks/point_records.h"

namespace zeb {

/// The name of a landmark (a state of its character), or "Land. N".
std::string landmark_label(int configuration, int landmark);
/// "1.2000,3.4000" with the decimals that are set; "?" for a missing point.
std::string position_text(const landmark_point& point, int dimensions);

void show_landmark_counts();
/// Those of so many dimensions; 0: all.
void show_dimensions(const landmark_lists& lists, int dimensions);
void list_landmarks(const landmark_lists& lists);
void show_choices(const landmark_lists& lists, std::string_view title,
                  double (*value)(const point_record& point));
void show_landmark_scores(const landmark_lists& lists);
void show_positions(const landmark_lists& lists);
void show_landmark_settings();

}  // namespace zeb
