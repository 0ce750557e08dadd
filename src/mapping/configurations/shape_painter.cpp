#include "mapping/configurations/shape_painter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "base/indices.h"
#include "base/message_text.h"
#include "matrix/landmarks.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/svg_text.h"

namespace zeb {
namespace {

constexpr double least_part = 0.6;  // of the shorter side of a box, to the longer one

}  // namespace

shape_painter::shape_painter(const seen_shapes& shapes, int character, double side, double margin)
    : shapes_(shapes), character_(character), width_(side), height_(side) {
  const double extent = std::max(shapes.width(), shapes.height());
  if (!(extent > 0)) return;
  scale_ = (side - 2 * margin) / extent;
  const auto fitting = [&](double part) {
    return std::max(part * scale_ + 2 * margin, side * least_part);
  };
  width_ = fitting(shapes.width());
  height_ = fitting(shapes.height());
}

double shape_painter::x_of(const seen_point& p) const {
  return middle_x_ + (p.x - shapes_.middle_x()) * scale_;
}
double shape_painter::y_of(const seen_point& p) const {
  return middle_y_ - (p.y - shapes_.middle_y()) * scale_;
}
double shape_painter::size_of(const seen_point& p, double size) const {
  const landmark_configuration* configuration = configuration_of(character_);
  if (!configuration || configuration->dimensions == 2) return size;
  return size * (1 + lmark.settings.volume / 100.0 * (p.nearness - 0.5));
}

void shape_painter::begin_box(double middle_x, double middle_y, const std::string& outline) {
  middle_x_ = middle_x;
  middle_y_ = middle_y;
  const double left = middle_x - width_ / 2;
  const double top = middle_y - height_ / 2;
  write_svg(
      text_of("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" rx=\"4\" fill=\"white\""
              " stroke=\"%s\" stroke-width=\"1\"/>\n",
              left, top, width_, height_, outline.c_str()));
  grow_svg_page(left, top, left + width_, top + height_);
}

void shape_painter::draw_wires(const seen_shape& shape, const figure_color& color,
                               double width) const {
  for (const landmark_wire& wire : wires_of(character_)) {
    const seen_point& a = shape[at(wire.from)];
    const seen_point& b = shape[at(wire.to)];
    if (a.missing || b.missing) continue;
    write_svg(
        text_of("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"%s\""
                " stroke-width=\"%.2f\" stroke-linecap=\"round\"/>\n",
                x_of(a), y_of(a), x_of(b), y_of(b), color.as_svg().c_str(), width));
  }
}

void shape_painter::draw_points(const seen_shape& shape, const figure_color& color,
                                double radius) const {
  for (const seen_point& p : shape) {
    if (p.missing) continue;
    write_svg(text_of("<circle cx=\"%.1f\" cy=\"%.1f\" r=\"%.1f\" fill=\"%s\" stroke=\"none\"/>\n",
                      x_of(p), y_of(p), size_of(p, radius), color.as_svg().c_str()));
  }
}

void shape_painter::draw_arrows(const seen_shape& from, const seen_shape& to,
                                const figure_color& color) const {
  if (!lmark.settings.lines) return;
  constexpr double shortest = 2;  // pixels: below, a point hides it
  for (std::size_t i = 0; i < from.size(); ++i) {
    if (from[i].missing || to[i].missing) continue;
    const double x1 = x_of(from[i]), y1 = y_of(from[i]), x2 = x_of(to[i]), y2 = y_of(to[i]);
    if (std::hypot(x2 - x1, y2 - y1) < shortest) continue;
    write_svg(
        text_of("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"%s\""
                " stroke-width=\"1.5\" marker-end=\"url(#arrow_head)\"/>\n",
                x1, y1, x2, y2, color.as_svg().c_str()));
  }
}

double shape_painter::room_at(double x, double y, const seen_shape& shape) const {
  double least = width_;
  for (const seen_point& p : shape)
    if (!p.missing) least = std::min(least, std::hypot(x_of(p) - x, y_of(p) - y));
  for (const landmark_wire& wire : wires_of(character_)) {
    const seen_point& a = shape[at(wire.from)];
    const seen_point& b = shape[at(wire.to)];
    if (a.missing || b.missing) continue;
    const double dx = x_of(b) - x_of(a), dy = y_of(b) - y_of(a);
    const double square = dx * dx + dy * dy;
    const double part =
        square > 0 ? std::clamp(((x - x_of(a)) * dx + (y - y_of(a)) * dy) / square, 0.0, 1.0) : 0;
    least = std::min(least, std::hypot(x_of(a) + part * dx - x, y_of(a) + part * dy - y));
  }
  return least;
}

// Each number stands on the side of its point where lines and points leave it most room.
void shape_painter::draw_numbers(const seen_shape& shape, double font_size) const {
  constexpr int sides = 12;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    if (shape[i].missing) continue;
    double best_x = 0, best_y = 0, most = -1;
    for (int side = 0; side < sides; ++side) {
      const double angle = 2 * std::numbers::pi * side / sides;
      const double x = x_of(shape[i]) + font_size * std::cos(angle);
      const double y = y_of(shape[i]) + font_size * std::sin(angle);
      const double room = room_at(x, y, shape);
      if (room <= most) continue;
      most = room;
      best_x = x;
      best_y = y;
    }
    draw_text(best_x, best_y + font_size * 0.36, std::to_string(i), font_size,
              " text-anchor=\"middle\" fill=\"black\"");
  }
}

void shape_painter::draw_corner_text(const std::string& text, bool lower, double font_size) const {
  const double x = lower ? middle_x_ + width_ / 2 - 3 : middle_x_ - width_ / 2 + 3;
  const double base = lower ? middle_y_ + height_ / 2 - 3 : middle_y_ - height_ / 2 + font_size;
  draw_text(x, base, text, font_size,
            lower ? " text-anchor=\"end\" fill=\"black\"" : " fill=\"rgb(90,90,90)\"");
}

void define_arrow_heads() {
  write_svg(
      "<defs><marker id=\"arrow_head\" viewBox=\"0 0 6 6\" refX=\"4\" refY=\"3\""
      " markerUnits=\"userSpaceOnUse\" markerWidth=\"6\" markerHeight=\"6\" orient=\"auto\"><path "
      "d=\"M0,0 L6,3 L0,6 z\" fill=\"" +
      change_color.as_svg() + "\" stroke=\"none\"/></marker></defs>\n");
}

void draw_text(double x, double base, const std::string& text, double font_size,
               const std::string& attributes) {
  write_svg(
      text_of("<text x=\"%.1f\" y=\"%.1f\" font-size=\"%g\" stroke=\"none\"", x, base, font_size) +
      attributes + ">" + xml_text(text) + "</text>\n");
  const double width = svg_text_width(text, font_size);
  const bool ends = attributes.find("\"end\"") != std::string::npos;
  const bool centred = attributes.find("\"middle\"") != std::string::npos;
  const double left = x - (ends ? width : centred ? width / 2 : 0);
  grow_svg_page(left, base - font_size, left + width, base + font_size * 0.3);
}

}  // namespace zeb
