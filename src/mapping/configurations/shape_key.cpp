#include "mapping/configurations/shape_key.h"

#include <algorithm>
#include <cmath>

#include "base/indices.h"
#include "base/message_text.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/svg_text.h"

namespace zeb {
namespace {

using point_list = std::vector<landmark_point>;
constexpr double key_box = 220;    // pixels
constexpr double least_key = 330;  // with its scale
constexpr double key_gap = 24;
constexpr double number_font = 11;

point_list mean_of(const std::vector<point_list>& shapes) {
  point_list mean;
  for (const point_list& shape : shapes) mean.resize(std::max(mean.size(), shape.size()));
  for (std::size_t p = 0; p < mean.size(); ++p) {
    double count = 0;
    for (const point_list& shape : shapes) {
      if (p >= shape.size() || is_missing(shape[p])) continue;
      mean[p] = {mean[p].x + shape[p].x, mean[p].y + shape[p].y, mean[p].z + shape[p].z};
      ++count;
    }
    mean[p] = count > 0 ? landmark_point{mean[p].x / count, mean[p].y / count, mean[p].z / count}
                        : missing_point;
  }
  return mean;
}

/// Names of landmarks with their numbers, where they have any.
std::vector<std::string> names_of_landmarks(int character) {
  std::vector<std::string> texts;
  if (at(character) >= matrix.char_names.size()) return texts;
  const auto& names = matrix.char_names[at(character)].states;
  for (std::size_t i = 0; i < names.size(); ++i)
    if (!names[i].empty()) texts.push_back(std::to_string(i) + "  " + names[i]);
  return texts;
}

/// In columns of this height; returns their width.
double draw_names(const std::vector<std::string>& names, double left, double top, double height,
                  double font_size) {
  const double step = std::ceil(font_size * 1.4);
  double x = left, y = top + font_size, widest = 0;
  for (const std::string& name : names) {
    if (y > top + height) {
      x += widest + 2 * font_size;
      y = top + font_size;
      widest = 0;
    }
    draw_text(x, y, name, font_size);
    widest = std::max(widest, svg_text_width(name, font_size));
    y += step;
  }
  return x + widest - left;
}

/// 1, 2 or 5 times a power of ten, at most `most`.
double round_length(double most) {
  const double power = std::pow(10, std::floor(std::log10(most)));
  for (const double digit : {5.0, 2.0})
    if (digit * power <= most) return digit * power;
  return power;
}

/// A line that tells how long so many units of the data are in the boxes.
void draw_scale_bar(double left, double y, double pixels_per_unit, double font_size) {
  constexpr double longest = 90;  // pixels
  const double units = round_length(longest / pixels_per_unit);
  const double length = units * pixels_per_unit;
  write_svg(
      text_of("<path d=\"M%.1f,%.1f v8 M%.1f,%.1f h%.1f m0,-4 v8\" fill=\"none\""
              " stroke=\"black\" stroke-width=\"1.5\"/>\n",
              left, y - 4, left, y, length));
  grow_svg_page(left, y - 4, left + length, y + 4);
  draw_text(left + length + 8, y + font_size * 0.36,
            text_of("%g ", units) + (units == 1 ? "unit" : "units") + " in the boxes above",
            font_size);
}

/// Returns its width.
double draw_key(const shape_key& key, double left, double top, double font_size) {
  const seen_shapes mean(configuration_of(key.character)->dimensions, {mean_of(key.shapes)});
  shape_painter painter(mean, key.character, key_box, 2 * number_font);
  const std::string heading = name_of_configuration(key.character);
  draw_text(left, top + font_size, heading, font_size, " font-weight=\"bold\"");
  const double box_top = top + font_size * 1.6;
  const double height = painter.height();
  painter.begin_box(left + painter.width() / 2, box_top + height / 2, "rgb(200,200,200)");
  painter.draw_wires(mean[0], shape_color, 1.2);
  painter.draw_points(mean[0], shape_color, 3);
  painter.draw_numbers(mean[0], number_font);
  draw_scale_bar(left, box_top + height + 16, key.pixels_per_unit, font_size);
  const double names = draw_names(names_of_landmarks(key.character),
                                  left + painter.width() + font_size, box_top, height, number_font);
  return std::max(painter.width() + font_size + names, svg_text_width(heading, font_size) * 1.1);
}

}  // namespace

std::string name_of_configuration(int character) {
  const bool named =
      at(character) < matrix.char_names.size() && !matrix.char_names[at(character)].name.empty();
  const std::string number = "character " + std::to_string(character);
  return named ? character_name(character) + " (" + number + ")" : number;
}

void write_shape_legend(const std::string& heading, const std::vector<legend_entry>& entries,
                        const std::vector<shape_key>& keys, const svg_options& options) {
  write_legend(heading, entries, options);
  const double top = svg_file.bottom + 20;
  double left = options.shift;
  for (const shape_key& key : keys)
    left += std::max(draw_key(key, left, top, options.terminal_font), least_key) + key_gap;
}

}  // namespace zeb
