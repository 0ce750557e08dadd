// Configurations drawn into the open figure, all to one scale.
#pragma once

#include <string>
#include <vector>

#include "mapping/configurations/landmark_view.h"
#include "mapping/figure_legend.h"

namespace zeb {

/// Draws into boxes of one size, in which the same place of the page means the same coordinates.
class shape_painter {
 public:
  /// `side`: the longer one of a box, pixels, `margin` of which stay free. The other one follows
  /// from the shapes.
  shape_painter(const seen_shapes& shapes, int character, double side, double margin = 14);

  double width() const { return width_; }
  double height() const { return height_; }
  /// Pixels of a unit of the data.
  double scale() const { return scale_; }
  /// What follows is drawn into the box with this middle.
  void begin_box(double middle_x, double middle_y, const std::string& outline);
  void draw_wires(const seen_shape& shape, const figure_color& color, double width) const;
  void draw_points(const seen_shape& shape, const figure_color& color, double radius) const;
  /// From the points of one shape to those of another, unless `lmark nolines` was said.
  void draw_arrows(const seen_shape& from, const seen_shape& to, const figure_color& color) const;
  void draw_numbers(const seen_shape& shape, double font_size) const;
  /// In the upper left or lower right corner of the box.
  void draw_corner_text(const std::string& text, bool lower, double font_size) const;

 private:
  double x_of(const seen_point& p) const;
  double y_of(const seen_point& p) const;
  double size_of(const seen_point& p, double size) const;
  /// How far the nearest point or line of the shape is from there, pixels.
  double room_at(double x, double y, const seen_shape& shape) const;

  const seen_shapes& shapes_;
  int character_;
  double width_;
  double height_;
  double scale_ = 1;
  double middle_x_ = 0;
  double middle_y_ = 0;
};

/// What the figures of shapes are drawn in.
constexpr figure_color ancestor_color = {185, 185, 185};
constexpr figure_color shape_color = {0, 90, 156};
constexpr figure_color change_color = {213, 94, 0};

/// The marker of arrows: once in each figure, before them.
void define_arrow_heads();
void draw_text(double x, double base, const std::string& text, double font_size,
               const std::string& attributes = {});

}  // namespace zeb
