// Configurations as figures show them: from where they are seen, and in which frame.
#pragma once

#include <span>
#include <vector>

#include "landmarks/landmark_settings.h"
#include "matrix/landmark_points.h"

namespace zeb {

/// The lines that figures draw between landmarks of a character.
std::span<const landmark_wire> wires_of(int character);

/// A point as it is seen, y upwards.
struct seen_point {
  double x = 0;
  double y = 0;
  double nearness = 0;  // 1 of the nearest point in a frame, 0 of the farthest
  bool missing = false;
};
using seen_shape = std::vector<seen_point>;

/// Everything that is to be compared in one picture, seen in one frame.
class seen_shapes {
 public:
  seen_shapes(int dimensions, const std::vector<std::vector<landmark_point>>& shapes);
  const seen_shape& operator[](std::size_t shape) const { return shapes_[shape]; }
  /// Of all points seen.
  double width() const { return right_ - left_; }
  double height() const { return top_ - bottom_; }
  double middle_x() const { return (left_ + right_) / 2; }
  double middle_y() const { return (bottom_ + top_) / 2; }

 private:
  std::vector<seen_shape> shapes_;
  double left_ = 0, right_ = 0, bottom_ = 0, top_ = 0;
};

}  // namespace zeb
