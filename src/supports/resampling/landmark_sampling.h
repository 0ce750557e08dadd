// Samples of landmarks: of whole configurations, as of other characters, or of single landmarks.
#pragma once

#include <vector>

#include "landmarks/landmark_settings.h"
#include "supports/resampling/sampling.h"

namespace zeb {

/// Are there active landmark characters?
bool landmarks_are_active();
/// Tells where configurations are drawn that the user may think of as landmarks.
void warn_of_whole_configurations();

/// The points of landmark characters weigh what a sample says, and with its end what they weighed
/// before. Empty, unless there is nothing but landmarks to draw from, and not by configurations.
class sampled_points {
 public:
  sampled_points();
  ~sampled_points();
  sampled_points(const sampled_points&) = delete;
  sampled_points& operator=(const sampled_points&) = delete;

  int count() const { return static_cast<int>(points_.size()); }
  void set(const sample& drawn);

 private:
  struct point {
    int configuration;
    int number;
    point_choice own;
  };
  std::vector<point> points_;
};

}  // namespace zeb
